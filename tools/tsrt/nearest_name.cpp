#include "nearest_name.h"

#include <algorithm>
#include <vector>

namespace tsrt {
namespace {

char16_t Lower(char16_t c) { return c >= u'A' && c <= u'Z' ? c + 32 : c; }

// Edits between `a` and `b`, adjacent swaps counting as one; stops counting past `limit`.
size_t Distance(tsruntime::StringView a, tsruntime::StringView b, size_t limit) {
  const size_t n = a.size(), m = b.size();
  if ((n > m ? n - m : m - n) > limit) return limit + 1;
  std::vector<size_t> before(m + 1), previous(m + 1), current(m + 1);
  for (size_t j = 0; j <= m; ++j) previous[j] = j;
  for (size_t i = 1; i <= n; ++i) {
    current[0] = i;
    for (size_t j = 1; j <= m; ++j) {
      const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) &&
          Lower(a[i - 2]) == Lower(b[j - 1])) {
        current[j] = std::min(current[j], before[j - 2] + 1);
      }
    }
    std::swap(before, previous);
    std::swap(previous, current);
  }
  return previous[m];
}

}  // namespace

NearestName::NearestName(tsruntime::StringView typed)
    : typed_(typed), best_distance_(std::clamp<size_t>(typed.size() / 4, 1, 3) + 1) {}

void NearestName::Consider(tsruntime::StringView candidate) {
  const size_t d = Distance(typed_, candidate, best_distance_ - 1);
  if (d == 0 || d >= best_distance_) return;
  best_distance_ = d;
  best_ = candidate;
}

std::optional<std::string> NearestName::Best() const {
  if (best_.empty()) return std::nullopt;
  return tsruntime::ToUtf8(best_);
}

}  // namespace tsrt
