// clsZKString: InstrRight, GetLeft, GetRight.
#include <string>

#include "string_matcher.h"
#include "tsruntime/automation/checked.h"
#include "tsruntime/clsZKString.h"
#include "tsruntime/errors.h"

namespace tsruntime {

using string_detail::kNotFound;
using string_detail::Matcher;

namespace {

// Index of the first or last occurrence of a non-empty `what` (binary), or kNotFound.
size_t FindSeparator(StringView text, StringView what, bool last) {
  if (last) return Matcher(what, vbBinaryCompare, Matcher::Direction::kBackward).FindLast(text);
  return Matcher(what, vbBinaryCompare).FindFirst(text);
}

}  // namespace

int32_t clsZKString::InstrRight(const String& Expression, const String& SearchStr,
                                int32_t SearchLen, int32_t CompareType) const {
  StringView work = Expression;
  if (SearchLen != -1) {
    if (SearchLen < -1) {
      RaiseOwn(xcZKERR_STRING_INSTRRIGHT, "clsZKString", "InstrRight",
               u"SearchLen = " + FromAscii(std::to_string(SearchLen)));
    }
    if (SearchLen == 0) return 0;
    work = work.substr(0, static_cast<size_t>(SearchLen));
  }
  if (SearchStr.empty()) return CheckedLong(static_cast<int64_t>(work.size()));
  // The last start position is where stepping through every occurrence, overlapping
  // ones included, would stop.
  const size_t at =
      Matcher(SearchStr, CompareType, Matcher::Direction::kBackward).FindLast(work);
  return at == kNotFound ? 0 : CheckedLong(static_cast<int64_t>(at) + 1);
}

String clsZKString::GetLeft(const String& Expression, const String& SepStr, bool InstrRight,
                            bool SepInclude, bool AllIfNoMatch) const {
  const size_t at = SepStr.empty() ? kNotFound : FindSeparator(Expression, SepStr, InstrRight);
  if (at == kNotFound) return AllIfNoMatch ? Expression : String();
  return Expression.substr(0, SepInclude ? at + SepStr.size() : at);
}

String clsZKString::GetRight(const String& Expression, const String& SepStr, bool InstrLeft,
                             bool SepInclude, bool AllIfNoMatch) const {
  const size_t at = SepStr.empty() ? kNotFound : FindSeparator(Expression, SepStr, !InstrLeft);
  if (at == kNotFound) return AllIfNoMatch ? Expression : String();
  return Expression.substr(SepInclude ? at : at + SepStr.size());
}

}  // namespace tsruntime
