// clsZKString::Replace in one pass over the input.
//
// The operation is defined step by step: find the first occurrence at or after the scan
// position, splice the replacement in, and resume the scan either at the start of the
// inserted text or, when the replacement itself contains the search text, just after it.
// Hosts rely on the re-scan ("aabb", "ab" -> "a" gives "aa"), so it is kept; only the
// cost of rebuilding the string on every replacement is not.
//
// Resuming just after the inserted text is an ordinary left-to-right replace. Resuming at
// its start is where the care goes. Text before the scan position is never looked at
// again, so it is final output. What the scan sees next is the whole replacement followed
// by unread input. The replacement holds no occurrence of its own, so every occurrence
// found there ends in the input and consumes at least one input character; afterwards
// the scan again sees the replacement followed by unread input. The matcher is therefore
// restarted in one fixed state, the state after reading the replacement, and the
// replacement is written out only once the next occurrence shows how much of it stays.
// Each input character is read once and each output character written once.
#include <algorithm>
#include <string>

#include "string_matcher.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {

using string_detail::FoldUnit;
using string_detail::kNotFound;
using string_detail::Matcher;

namespace {

// The result under construction. Replacements append many short pieces: those go in
// character by character, which costs less than a general append.
class Output {
 public:
  explicit Output(size_t expected) { buffer_.reserve(expected); }

  void Append(StringView piece) {
    if (piece.size() <= 4) {
      for (char16_t c : piece) buffer_.push_back(c);
    } else {
      buffer_.append(piece);
    }
  }

  String Take() && { return std::move(buffer_); }

 private:
  String buffer_;
};

template <bool kFold>
String ReplaceAll(StringView input, const Matcher& search, StringView replacement,
                  bool resume_after_replacement) {
  const size_t m = search.size();
  const size_t restart = resume_after_replacement ? 0 : search.Run(replacement);

  Output out(input.size() + input.size() / 8);
  // The scan window: the replacement, not written yet, when `pending` is set, then the
  // input from `window_start`.
  bool pending = false;
  size_t window_start = 0;
  size_t q = 0;
  const size_t n = input.size();
  for (size_t i = 0; i < n; ++i) {
    if (q == 0) {
      i = search.NextStart<kFold>(input, i);
      if (i == n) break;
    }
    q = search.Step<kFold>(q, input[i]);
    if (q < m) continue;

    const size_t window = (pending ? replacement.size() : 0) + (i + 1 - window_start);
    const size_t match_start = window - m;  // within the window
    if (pending && match_start < replacement.size()) {
      out.Append(replacement.substr(0, match_start));
    } else {
      if (pending) out.Append(replacement);
      const size_t before = match_start - (pending ? replacement.size() : 0);
      out.Append(input.substr(window_start, before));
    }
    if (resume_after_replacement) {
      out.Append(replacement);
      pending = false;
      q = 0;
    } else {
      pending = true;
      q = restart;
    }
    window_start = i + 1;
  }
  if (pending) out.Append(replacement);
  out.Append(input.substr(window_start));
  return std::move(out).Take();
}

}  // namespace

String clsZKString::Replace(const String& Expression, const String& SearchStr,
                            const String& ReplaceStr, int32_t CompareType) const {
  if (SearchStr.empty()) return Expression;
  const Matcher search(SearchStr, CompareType);
  const bool resume_after = search.FindFirst(ReplaceStr) != kNotFound;
  return search.folds() ? ReplaceAll<true>(Expression, search, ReplaceStr, resume_after)
                        : ReplaceAll<false>(Expression, search, ReplaceStr, resume_after);
}

}  // namespace tsruntime
