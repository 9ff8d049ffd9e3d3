#include "tsruntime/automation/compare.h"

#include <unicode/coll.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <map>
#include <memory>

#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

// One case-blind collator per locale and thread: ICU collators are not thread-safe.
icu::Collator& TextCollator() {
  thread_local std::map<std::string, std::unique_ptr<icu::Collator>> collators;
  const std::string name = CurrentLocale();
  auto it = collators.find(name);
  if (it == collators.end()) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> c(
        icu::Collator::createInstance(icu::Locale(name.c_str()), status));
    if (U_FAILURE(status) || !c) {
      status = U_ZERO_ERROR;
      c.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    }
    c->setStrength(icu::Collator::SECONDARY);
    // Latin before Cyrillic whatever the locale, as hosts' sorted lists always were;
    // ICU's Russian rules would move Cyrillic first.
    const int32_t root_order = UCOL_REORDER_CODE_NONE;
    status = U_ZERO_ERROR;
    c->setReorderCodes(&root_order, 1, status);
    it = collators.emplace(name, std::move(c)).first;
  }
  return *it->second;
}

int Sign(int x) { return (x > 0) - (x < 0); }

bool IsNumberLike(const Variant& v) {
  return v.isNumeric() || v.type() == VarType::kBoolean || v.type() == VarType::kDate;
}

int CompareNumbers(const Variant& a, const Variant& b) {
  if (a.type() == VarType::kDecimal || b.type() == VarType::kDecimal) {
    return Decimal::Compare(ToDecimal(a), ToDecimal(b));
  }
  if (a.type() == VarType::kCurrency || b.type() == VarType::kCurrency) {
    if (a.type() != VarType::kDouble && a.type() != VarType::kSingle &&
        b.type() != VarType::kDouble && b.type() != VarType::kSingle) {
      const int64_t x = ToCurrency(a).raw, y = ToCurrency(b).raw;
      return (x > y) - (x < y);
    }
  }
  const double x = ToDouble(a), y = ToDouble(b);
  return (x > y) - (x < y);
}

}  // namespace

char16_t TextFold(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? c + 32 : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  const UChar32 f = u_foldCase(c, U_FOLD_CASE_DEFAULT);
  return f < 0x10000 ? static_cast<char16_t>(f) : c;
}

String FoldCase(StringView text) {
  String out(text);
  for (char16_t& c : out) c = TextFold(c);
  return out;
}

int CompareStrings(StringView a, StringView b, int32_t mode) {
  if (mode == vbBinaryCompare) return Sign(a.compare(b));
  UErrorCode status = U_ZERO_ERROR;
  const UCollationResult r = TextCollator().compare(
      a.data(), static_cast<int32_t>(a.size()), b.data(), static_cast<int32_t>(b.size()),
      status);
  return r == UCOL_LESS ? -1 : (r == UCOL_GREATER ? 1 : 0);
}

int64_t FindString(StringView text, StringView what, int64_t start, int32_t mode) {
  if (start < 1 || start > static_cast<int64_t>(text.size()) + 1) return 0;
  if (what.empty()) return start;
  size_t pos;
  if (mode == vbBinaryCompare) {
    pos = text.find(what, static_cast<size_t>(start - 1));
  } else {
    pos = FoldCase(text).find(FoldCase(what), static_cast<size_t>(start - 1));
  }
  return pos == StringView::npos ? 0 : static_cast<int64_t>(pos) + 1;
}

bool ContainsChar(StringView set, char16_t ch, int32_t mode) {
  if (mode == vbBinaryCompare) return set.find(ch) != StringView::npos;
  const char16_t f = TextFold(ch);
  return std::any_of(set.begin(), set.end(), [f](char16_t c) { return TextFold(c) == f; });
}

std::string TextSortKey(StringView text) {
  icu::Collator& c = TextCollator();
  const icu::UnicodeString s(false, text.data(), static_cast<int32_t>(text.size()));
  std::string key(64, '\0');
  int32_t n = c.getSortKey(s, reinterpret_cast<uint8_t*>(key.data()),
                           static_cast<int32_t>(key.size()));
  if (n > static_cast<int32_t>(key.size())) {
    key.resize(n);
    n = c.getSortKey(s, reinterpret_cast<uint8_t*>(key.data()), n);
  }
  key.resize(n > 0 ? n - 1 : 0);  // drop the terminating zero
  return key;
}

uint64_t TextSortKeyPrefix(StringView text) {
  // The key is made on the stack; one that does not fit is made whole.
  uint8_t key[64];
  const icu::UnicodeString s(false, text.data(), static_cast<int32_t>(text.size()));
  const int32_t n = TextCollator().getSortKey(s, key, static_cast<int32_t>(sizeof key));
  std::string whole;
  const uint8_t* bytes = key;
  size_t size = n > 0 ? static_cast<size_t>(n - 1) : 0;  // the terminating zero left out
  if (size >= sizeof key) {
    whole = TextSortKey(text);
    bytes = reinterpret_cast<const uint8_t*>(whole.data());
    size = whole.size();
  }
  uint64_t prefix = 0;
  for (size_t i = 0; i < 8; ++i) prefix = prefix << 8 | (i < size ? bytes[i] : 0);
  return prefix;
}

int CompareVariants(const Variant& a, const Variant& b, int32_t mode) {
  if (a.isObject() || b.isObject()) return CompareVariants(DefaultValue(a), DefaultValue(b), mode);
  if (a.isNull() || b.isNull()) RaiseRuntime(RuntimeError::kInvalidUseOfNull);
  auto comparable = [](const Variant& v) {
    return v.isEmpty() || v.isString() || IsNumberLike(v);
  };
  if (!comparable(a) || !comparable(b)) RaiseRuntime(RuntimeError::kTypeMismatch);
  if (a.isString() && b.isString()) return CompareStrings(a.asString(), b.asString(), mode);
  if (a.isString()) return b.isEmpty() ? CompareStrings(a.asString(), u"", mode) : 1;
  if (b.isString()) return a.isEmpty() ? CompareStrings(u"", b.asString(), mode) : -1;
  return CompareNumbers(a.isEmpty() ? Variant(int16_t{0}) : a,
                        b.isEmpty() ? Variant(int16_t{0}) : b);
}

bool VariantEquals(const Variant& a, const Variant& b, int32_t mode) {
  if (a.isNull() || b.isNull()) return false;
  try {
    return CompareVariants(a, b, mode) == 0;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace tsruntime
