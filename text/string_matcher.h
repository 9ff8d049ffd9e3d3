// Linear-time building blocks of clsZKString's searches: a pattern matcher and a
// character set, both under a compare mode.
//
// Text mode matches code units through `TextFold`, exactly as `FindString` and
// `ContainsChar` do, so these give the same answers as those functions without their
// per-call copies and per-character scans.
#pragma once

#include <cstdint>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

  // The first index at or after `i` whose character is `first()` (once folded, in text
  // mode), or the text's length. Most positions cannot start an occurrence, so they are
  // skipped without the automaton, eight at a time where the processor allows.
  template <bool kFold>
  size_t NextStart(StringView text, size_t i) const {
    const size_t n = text.size();
    const char16_t* p = text.data();
    const char16_t head = pattern_[0];
#if defined(__SSE2__)
    // A text-mode head outside ASCII may be the fold of characters not known here.
    if (!kFold || head < 0x80) {
      const __m128i same = heads_[0], other = heads_[1];
      for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        __m128i hit = _mm_or_si128(_mm_cmpeq_epi16(v, same), _mm_cmpeq_epi16(v, other));
        // Beyond ASCII the fold decides, one character at a time: signed, the units from
        // 0x80 up compare above 0x7F once their top bit is flipped.
        if (kFold) {
          const __m128i flip = _mm_set1_epi16(static_cast<short>(0x8000));
          const __m128i ascii_end = _mm_set1_epi16(static_cast<short>(0x7F ^ 0x8000));
          hit = _mm_or_si128(hit, _mm_cmpgt_epi16(_mm_xor_si128(v, flip), ascii_end));
        }
        for (auto mask = static_cast<unsigned>(_mm_movemask_epi8(hit)); mask != 0;
             mask &= mask - 1, mask &= mask - 1) {  // two bits per character
          const size_t at = i + static_cast<size_t>(__builtin_ctz(mask)) / 2;
          if (!kFold || FoldUnit(p[at]) == head) return at;
        }
      }
    }
#endif
    while (i < n && (kFold ? FoldUnit(p[i]) : p[i]) != head) ++i;
    return i;
  }

 private:
  String pattern_;             // folded in text mode, reversed when backward
#if defined(__SSE2__)
  __m128i heads_[2];  // the head, and the ASCII capital of a text-mode head, eight times
#endif
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
