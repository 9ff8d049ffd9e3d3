// clsZKString: Filter, Trim, ChangeCase — operations character by character.
#include <algorithm>

#include "string_matcher.h"
#include "tsruntime/automation/checked.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {

using string_detail::CharSet;

String clsZKString::Filter(const String& Expression, const String& FilteringStr, bool Iclude,
                           int32_t CompareType, int32_t* SelStart) const {
  const CharSet members(FilteringStr, CompareType);
  const int64_t caret = SelStart ? *SelStart : 0;
  String result;
  result.reserve(Expression.size());
  int64_t removed_before_caret = 0;
  for (size_t i = 0; i < Expression.size(); ++i) {
    const char16_t c = Expression[i];
    if (members.contains(c) == Iclude) {
      result.push_back(c);
    } else if (static_cast<int64_t>(i) + 1 <= caret) {
      ++removed_before_caret;
    }
  }
  if (SelStart) *SelStart = CheckedLong(caret - removed_before_caret);
  return result;
}

String clsZKString::Trim(const String& Expression, const String& CharsTrim,
                         xeZK_TRIM_TYPE TrimType, int32_t CompareType,
                         int32_t* SelStart) const {
  if (Expression.empty()) return {};
  const CharSet trimmed(CharsTrim, CompareType);
  size_t begin = 0, end = Expression.size();
  if (TrimType & xcZK_TRIM_LEFT) {
    while (begin < end && trimmed.contains(Expression[begin])) ++begin;
    // The caret moves left with each character removed before it, down to 0; a caret
    // already below 1 stays where it is.
    if (SelStart && *SelStart >= 1) {
      *SelStart = static_cast<int32_t>(std::max<int64_t>(0, int64_t{*SelStart} - begin));
    }
  }
  if (TrimType & xcZK_TRIM_RIGHT) {
    const size_t before = end;
    while (end > begin && trimmed.contains(Expression[end - 1])) --end;
    const int64_t length = static_cast<int64_t>(end - begin);
    if (SelStart && end != before && *SelStart > length) *SelStart = static_cast<int32_t>(length);
  }
  return Expression.substr(begin, end - begin);
}

Variant clsZKString::ChangeCase(const Variant& SourceString, xeZK_CHANGE_CASE CaseType,
                                const String&) const {
  if (!SourceString.isString()) return SourceString;
  const String& s = SourceString.asString();
  if (s.empty()) return Variant(String());
  // Word delimiters used to make the same whole-string conversion run once per word;
  // case mapping gives the same text when repeated, so one run is the result.
  switch (CaseType) {
    case xcZK_CASE_ALLDOWN:
      return Variant(ToLower(s));
    case xcZK_CASE_ALLUP:
      return Variant(ToUpper(s));
    case xcZK_CASE_FIRSTUP:
      return Variant(ToUpper(StringView(s).substr(0, 1)) + ToLower(StringView(s).substr(1)));
    default:
      return Variant(s);
  }
}

}  // namespace tsruntime
