// The lines a late-bound call adds after its result: one "Name = literal" for each
// argument the member wrote back, in parameter order, under the parameter's declared
// name. Arguments the caller left out have no line.
//
//   Filter("a-b-c", "-", False, 0, 3)   ->   "SelStart = 2\n"
#pragma once

#include <string>

#include "tsruntime/automation/dispatch.h"

namespace tsrt {

std::string WrittenBackLines(const tsruntime::Invocation& done);

}  // namespace tsrt
