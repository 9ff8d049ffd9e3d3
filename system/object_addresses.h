// Object addresses that may be turned back into references.
//
// A raw address names a live object only while the object lives; dereferencing a stale
// or made-up one would crash the host. Addresses handed out are remembered per thread
// until their object is destroyed, and only those are turned back.
#pragma once

#include <cstdint>

#include "tsruntime/automation/object.h"

namespace tsruntime {

// The address of `object`, remembered until the object is destroyed.
uintptr_t RememberAddress(Object& object);

// The live object whose address this thread handed out, or null.
Object* RememberedObject(uintptr_t address);

}  // namespace tsruntime
