// Linear-time building blocks of clsZKString's searches: a pattern matcher and a
// character set, both under a compare mode.
//
// Text mode matches code units through `TextFold`, exactly as `FindString` and
// `ContainsChar` do, so these give the same answers as those functions without their
// per-call copies and per-character scans.
#pragma once

#include <cstdint>
#include <vector>

#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::string_detail {

inline constexpr size_t kNotFound = static_cast<size_t>(-1);

// `TextFold` with its ASCII case inline: it runs once per character read.
inline char16_t FoldUnit(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  return TextFold(c);
}

// A non-empty pattern prepared for Knuth-Morris-Pratt matching, forwards or backwards.
// Reading a character costs amortised constant time, whatever the text.
class Matcher {
 public:
  enum class Direction { kForward, kBackward };

  Matcher(StringView pattern, int32_t mode, Direction direction = Direction::kForward);

  size_t size() const { return pattern_.size(); }
  bool folds() const { return fold_; }

  // The matcher's state after reading `c` in state `q` (the length of the longest
  // prefix of the pattern ending there); `size()` means a whole occurrence. `q` must be
  // below `size()`.
  template <bool kFold>
  size_t Step(size_t q, char16_t c) const {
    const char16_t u = kFold ? FoldUnit(c) : c;
    while (q > 0 && pattern_[q] != u) q = fail_[q - 1];
    return pattern_[q] == u ? q + 1 : 0;
  }

  // The state after reading all of `text` from state 0 (stops at a whole occurrence).
  size_t Run(StringView text) const;

  // Index of the first occurrence at or after `from`, or kNotFound (forward matcher).
  size_t FindFirst(StringView text, size_t from = 0) const;
  // Index of the start of the last occurrence, or kNotFound (backward matcher).
  size_t FindLast(StringView text) const;

  // The first character the matcher expects in state 0, as read (folded in text mode).
  char16_t first() const { return pattern_[0]; }

 private:
  String pattern_;             // folded in text mode, reversed when backward
  std::vector<uint32_t> fail_;  // fail_[i]: longest proper border of pattern_[0..i]
  bool fold_;
};

// Membership of code units in a set of characters under a compare mode, in constant time.
class CharSet {
 public:
  CharSet(StringView set, int32_t mode);

  bool contains(char16_t c) const {
    const char16_t u = fold_ ? FoldUnit(c) : c;
    if (bits_.empty()) return small_.find(u) != StringView::npos;
    return (bits_[u >> 6] >> (u & 63)) & 1;
  }

 private:
  bool fold_;
  String small_;                // a short set, searched directly
  std::vector<uint64_t> bits_;  // a long one, as a bitmap of all code units
};


}  // namespace tsruntime::string_detail
