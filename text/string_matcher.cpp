#include "string_matcher.h"

#include <algorithm>
#include <limits>

#include "tsruntime/automation/error.h"

namespace tsruntime::string_detail {
namespace {

constexpr size_t kSmallSet = 16;

template <bool kFold>
size_t FindFirstIn(const Matcher& m, StringView text, size_t from) {
  const size_t n = text.size();
  size_t q = 0;
  for (size_t i = from; i < n; ++i) {
    if (q == 0) {
      i = m.NextStart<kFold>(text, i);
      if (i == n) break;
    }
    q = m.Step<kFold>(q, text[i]);
    if (q == m.size()) return i + 1 - q;
  }
  return kNotFound;
}

template <bool kFold>
size_t FindLastIn(const Matcher& m, StringView text) {
  const char16_t head = m.first();  // the pattern's last character
  size_t q = 0;
  for (size_t i = text.size(); i-- > 0;) {
    if (q == 0) {
      while ((kFold ? FoldUnit(text[i]) : text[i]) != head) {
        if (i == 0) return kNotFound;
        --i;
      }
    }
    q = m.Step<kFold>(q, text[i]);
    if (q == m.size()) return i;
  }
  return kNotFound;
}

}  // namespace

Matcher::Matcher(StringView pattern, int32_t mode, Direction direction)
    : pattern_(pattern), fail_(pattern.size(), 0), fold_(mode != vbBinaryCompare) {
  if (fold_) {
    for (char16_t& c : pattern_) c = TextFold(c);
  }
  if (direction == Direction::kBackward) std::reverse(pattern_.begin(), pattern_.end());
#if defined(__SSE2__)
  const char16_t head = pattern_[0];
  const char16_t other = fold_ && head >= u'a' && head <= u'z' ? head - 32 : head;
  heads_[0] = _mm_set1_epi16(static_cast<short>(head));
  heads_[1] = _mm_set1_epi16(static_cast<short>(other));
#endif
  for (size_t i = 1, k = 0; i < pattern_.size(); ++i) {
    while (k > 0 && pattern_[i] != pattern_[k]) k = fail_[k - 1];
    if (pattern_[i] == pattern_[k]) ++k;
    fail_[i] = static_cast<uint32_t>(k);
  }
}

size_t Matcher::Run(StringView text) const {
  size_t q = 0;
  for (char16_t c : text) {
    q = fold_ ? Step<true>(q, c) : Step<false>(q, c);
    if (q == size()) break;
  }
  return q;
}

size_t Matcher::FindFirst(StringView text, size_t from) const {
  return fold_ ? FindFirstIn<true>(*this, text, from) : FindFirstIn<false>(*this, text, from);
}

size_t Matcher::FindLast(StringView text) const {
  return fold_ ? FindLastIn<true>(*this, text) : FindLastIn<false>(*this, text);
}

CharSet::CharSet(StringView set, int32_t mode) : fold_(mode != vbBinaryCompare) {
  String units(set);
  if (fold_) {
    for (char16_t& c : units) c = TextFold(c);
  }
  if (units.size() <= kSmallSet) {
    small_ = std::move(units);
    return;
  }
  bits_.assign(65536 / 64, 0);
  for (char16_t u : units) bits_[u >> 6] |= uint64_t{1} << (u & 63);
}


}  // namespace tsruntime::string_detail
