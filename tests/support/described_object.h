// Test helper: an object that stands for a value through its default member.
#pragma once

#include "tsruntime/automation/variant.h"
#include "tsruntime/clsTSError.h"

namespace tsruntime::testing {

// A `clsTSError` whose default member, Description, holds `text`.
inline Variant Described(StringView text) {
  auto e = New<clsTSError>();
  e->LetDescription(String(text));
  return Variant(e);
}

}  // namespace tsruntime::testing
