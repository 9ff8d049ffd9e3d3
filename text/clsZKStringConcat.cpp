#include "tsruntime/clsZKStringConcat.h"

#include <limits>

#include "tsruntime/automation/checked.h"

namespace tsruntime {

void clsZKStringConcat::Clear() {
  String().swap(text_);
  chars_allocated_ = 0;
}

void clsZKStringConcat::Add(const String& strAddString) {
  if (strAddString.empty()) return;
  if (strAddString.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  const int32_t n = static_cast<int32_t>(strAddString.size());
  const int32_t needed = CheckedAdd(CharsUsed(), n);
  if (needed > chars_allocated_) {
    const int32_t excess = needed - chars_allocated_;
    if (alloc_size_ == 0) RaiseRuntime(RuntimeError::kDivisionByZero);
    const int32_t blocks = CheckedAdd(excess / alloc_size_, 1);
    const int32_t grow = CheckedMul(blocks, alloc_size_);
    // A negative block size gives a negative padding length, or one too short for the
    // piece, and the host's string functions refuse both.
    if (grow < 0) RaiseRuntime(RuntimeError::kInvalidCall);
    chars_allocated_ = CheckedAdd(chars_allocated_, grow);
    if (needed > chars_allocated_) RaiseRuntime(RuntimeError::kInvalidCall);
  }
  // The reported padding is never materialised: the text's own storage grows
  // geometrically, which keeps long runs of small appends linear.
  text_.append(strAddString);
}

TSRUNTIME_DEFINE_CLASS(clsZKStringConcat) {
  static const ClassInfo info =
      ClassBuilder<clsZKStringConcat>("clsZKStringConcat")
          .Get("CharsAllocated", &clsZKStringConcat::CharsAllocated)
          .Get("CharsUsed", &clsZKStringConcat::CharsUsed)
          .Get("AllocSize", &clsZKStringConcat::AllocSize)
          .Let("AllocSize", &clsZKStringConcat::LetAllocSize, {"RHS"})
          .Method("Clear", &clsZKStringConcat::Clear)
          .Method("Add", &clsZKStringConcat::Add, {"strAddString"})
          .Method("GetStr", &clsZKStringConcat::GetStr)
          .Build();
  return info;
}

}  // namespace tsruntime
