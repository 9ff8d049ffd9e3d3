// The error routine of the timer and subclassing modules, which keep a rule of their own
// rather than the library's source convention.
#pragma once

#include <cstdint>

namespace tsruntime::ui_detail {

// A code of 1000 or less is raised as it stands, with no source and no description.
// A larger one is raised as code Or 0x80040000, source "tsruntime.WindowProc", with the
// English description of the code (empty for a code without one).
[[noreturn]] void RaiseModuleError(int32_t code);

}  // namespace tsruntime::ui_detail
