#include "module_error.h"

#include "tsruntime/automation/error.h"

namespace tsruntime::ui_detail {
namespace {

constexpr int32_t kUserErrorBase = static_cast<int32_t>(0x80040000u);

// Both modules' codes in one table: the source text is shared too.
const char16_t* Description(int32_t code) {
  switch (code) {
    case 13081: return u"Can't subclass window";
    case 13082: return u"Message already handled by another class";
    case 13083: return u"Invalid window";
    case 13084: return u"Can't modify external window";
    case 13651: return u"No more than 10 timers allowed per class";
    case 13652: return u"Can't create system timer";
    default: return u"";
  }
}

}  // namespace

void RaiseModuleError(int32_t code) {
  if (code <= 1000) throw Error(code, String(), String());
  throw Error(code | kUserErrorBase, u"tsruntime.WindowProc", Description(code));
}

}  // namespace tsruntime::ui_detail
