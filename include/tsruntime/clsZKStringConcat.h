// clsZKStringConcat: builds a long string from many short pieces.
//
//   auto sc = tsruntime::New<tsruntime::clsZKStringConcat>();
//   sc->Add(u"first line\r\n");
//   sc->Add(u"second line\r\n");
//   String text = sc->GetStr();   // both lines; the object can go on adding
//
// The object reports its buffer the way hosts have always seen it: the buffer grows in
// whole blocks of `AllocSize` characters (default 1000) and `CharsAllocated` says how
// long it is. A growing `Add` adds
//
//   ((CharsUsed + length - CharsAllocated) \ AllocSize + 1) * AllocSize
//
// characters, the "+ 1" applying even when the excess is an exact multiple of the
// block: adding 1000 characters to a new object reports 2000 allocated. An `Add` that
// fits into the spare space reports no growth, and `Add("")` changes nothing.
//
// Underneath, the text is kept in pieces that grow geometrically whatever `AllocSize`
// says and are never moved once written, so appends cost amortised constant time, a huge
// `AllocSize` reserves nothing up front, and `GetStr` copies each character once. All
// lengths count UTF-16 code units.
//
// Errors are the host runtime's own and nothing is caught:
//   - overflow (6) when a counter would leave the signed 32-bit range;
//   - division by zero (11) from the next growing `Add` once `AllocSize` is 0 (an `Add`
//     that fits still succeeds);
//   - invalid procedure call or argument (5) from a growing `Add` when a negative
//     `AllocSize` makes the growth negative or too small for the piece.
// `AllocSize` itself is stored unchecked.
#pragma once

#include <cstdint>
#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

class clsZKStringConcat : public Object {
 public:
  clsZKStringConcat() = default;
  TSRUNTIME_CLASS_INFO;

  // Length of the buffer as hosts see it; moves in whole blocks (see above).
  int32_t CharsAllocated() const { return chars_allocated_; }
  // Length of the text added so far.
  int32_t CharsUsed() const { return chars_used_; }

  // The growth block in characters; takes effect at the next growth.
  int32_t AllocSize() const { return alloc_size_; }
  void LetAllocSize(int32_t value) { alloc_size_ = value; }

  // Back to an empty text with nothing allocated; `AllocSize` keeps its value.
  void Clear();

  // Appends `strAddString` (not changed).
  //   new object, AllocSize 1000: Add(1 char)   -> CharsAllocated 1000, CharsUsed 1
  //                               Add(999 chars) -> 1000, 1000 (fits exactly)
  //                               Add(1 char)   -> 2000, 1001
  void Add(const String& strAddString);

  // The text added so far (the first `CharsUsed` characters; trailing spaces kept).
  String GetStr() const;

 private:
  std::vector<String> pieces_;  // each filled up to the capacity it was given, the last one aside
  int32_t chars_used_ = 0;
  int32_t chars_allocated_ = 0;
  int32_t alloc_size_ = 1000;
};

}  // namespace tsruntime
