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
          .Help(u"Builds a long string from many short pieces, reporting its buffer in whole "
                u"blocks of AllocSize characters.")
          .Get("CharsAllocated", &clsZKStringConcat::CharsAllocated)
          .Help(u"The length of the buffer as hosts see it; grows in whole blocks of AllocSize "
                u"characters.")
          .Get("CharsUsed", &clsZKStringConcat::CharsUsed)
          .Help(u"The length of the text added so far.")
          .Get("AllocSize", &clsZKStringConcat::AllocSize)
          .Help(u"The growth block in characters (1000 at first); stored unchecked, taken at the "
                u"next growth.")
          .Let("AllocSize", &clsZKStringConcat::LetAllocSize, {"RHS"})
          .Method("Clear", &clsZKStringConcat::Clear)
          .Help(u"Back to an empty text with nothing allocated; AllocSize keeps its value.")
          .Method("Add", &clsZKStringConcat::Add, {"strAddString"})
          .Help(u"Appends strAddString, growing the buffer by whole blocks when it does not fit.")
          .Method("GetStr", &clsZKStringConcat::GetStr)
          .Help(u"The text added so far.")
          .Build();
  return info;
}

}  // namespace tsruntime
