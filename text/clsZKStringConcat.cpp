#include "tsruntime/clsZKStringConcat.h"

#include <algorithm>
#include <limits>

#include "tsruntime/automation/checked.h"

namespace tsruntime {

namespace {

// The first piece's size, and the largest; in between each new piece is as long as the
// text before it.
constexpr size_t kFirstPiece = 256, kLargestPiece = size_t{1} << 20;

}  // namespace

void clsZKStringConcat::Clear() {
  std::vector<String>().swap(pieces_);
  chars_used_ = 0;
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
  // The reported padding is never materialised. The text goes into the last piece as
  // far as it has room; a full piece is left where it is and a new one begun.
  const size_t pieces_before = pieces_.size();
  const size_t last_before = pieces_.empty() ? 0 : pieces_.back().size();
  try {
    StringView rest = strAddString;
    while (!rest.empty()) {
      if (pieces_.empty() || pieces_.back().size() == pieces_.back().capacity()) {
        const size_t size =
            std::clamp(static_cast<size_t>(chars_used_), kFirstPiece, kLargestPiece);
        pieces_.emplace_back().reserve(size);
      }
      String& last = pieces_.back();
      const size_t take = std::min(rest.size(), last.capacity() - last.size());
      last.append(rest.substr(0, take));
      rest.remove_prefix(take);
    }
  } catch (...) {  // out of memory: the text stays as it was
    pieces_.resize(pieces_before);
    if (pieces_before > 0) pieces_.back().resize(last_before);
    throw;
  }
  chars_used_ = needed;
}

String clsZKStringConcat::GetStr() const {
  String text;
  text.reserve(static_cast<size_t>(chars_used_));
  for (const String& piece : pieces_) text += piece;
  return text;
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
