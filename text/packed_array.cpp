// clsZKString: ArrayJoin and ArraySplit, the packed-array text.
//
// A record is a nine-digit header holding the element's length + 9, then the element.
// Both directions keep the host runtime's own failures (bad subscripts, bad headers,
// overflowing positions) because callers handle those numbers.
#include <limits>
#include <string>
#include <vector>

#include "string_matcher.h"
#include "tsruntime/automation/checked.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {


namespace {

constexpr size_t kHeader = 9;

// The element at host index `i` as text; a string array's element is not copied.
const String& ElementText(const SafeArray& array, int32_t i, String& scratch) {
  const Variant& v = array.at(i);
  if (v.isString()) return v.asString();
  scratch = ToString(v);
  return scratch;
}

// `length` with at least nine digits, zero-padded; only its first nine are written, so a
// length beyond nine digits loses its last ones, as a fixed-width field does.
void AppendHeader(String& out, int64_t length) {
  const std::string digits = std::to_string(length);
  String header(digits.size() < kHeader ? kHeader - digits.size() : 0, u'0');
  header += FromAscii(digits);
  out.append(header, 0, kHeader);
}

// The header at `p` as the host runtime converts text to a Long: nine plain digits are
// the common case; anything else goes through the full conversion, which raises type
// mismatch (13) for text that is not a number.
int64_t ReadHeader(StringView data, size_t p) {
  const StringView header = data.substr(p, kHeader);
  int64_t value = 0;
  bool plain = header.size() == kHeader;
  for (char16_t c : header) {
    if (c < u'0' || c > u'9') {
      plain = false;
      break;
    }
    value = value * 10 + (c - u'0');
  }
  return plain ? value : ToLong(Variant(String(header)));
}

}  // namespace

String clsZKString::ArrayJoin(const SafeArray& DataArray) const {
  // Walking from index 0, not from the lower bound, is what the format's readers expect:
  // an array starting above 0 fails on index 0 with subscript out of range.
  const int32_t upper = DataArray.ubound(1);
  String scratch;
  int64_t total = 0;
  for (int32_t i = 0; i <= upper; ++i) {
    total += static_cast<int64_t>(ElementText(DataArray, i, scratch).size()) + kHeader;
    CheckedLong(total);
  }
  String result;
  result.reserve(static_cast<size_t>(total));
  for (int32_t i = 0; i <= upper; ++i) {
    const String& element = ElementText(DataArray, i, scratch);
    AppendHeader(result, static_cast<int64_t>(element.size()) + kHeader);
    result += element;
  }
  return result;
}

SafeArray clsZKString::ArraySplit(const String& DataString) const {
  if (DataString.empty()) return SafeArray(VarType::kString, {Bounds{-1, -1}});
  // The loop runs while p < length (1-based), so a one-character text yields the single
  // empty element the result starts with.
  std::vector<String> elements;
  int64_t p = 1;
  const int64_t length = static_cast<int64_t>(DataString.size());
  while (p < length) {
    const int64_t record = ReadHeader(DataString, static_cast<size_t>(p - 1));
    if (record < static_cast<int64_t>(kHeader)) RaiseRuntime(RuntimeError::kInvalidCall);
    const int64_t from = p - 1 + kHeader;
    elements.push_back(from < length ? DataString.substr(static_cast<size_t>(from),
                                                         static_cast<size_t>(record - kHeader))
                                     : String());
    p = CheckedLong(p + record);
  }
  if (elements.empty()) elements.emplace_back();
  return SafeArray::FromStrings(elements);
}

}  // namespace tsruntime
