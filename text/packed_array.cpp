// clsZKString: ArrayJoin and ArraySplit, the packed-array text.
//
// A record is a nine-digit header holding the element's length + 9, then the element.
// Both directions keep the host runtime's own failures (bad subscripts, bad headers,
// overflowing positions) because callers handle those numbers.
#include <limits>
#include <string>
#include <vector>

#include "packed_fields.h"
#include "tsruntime/automation/checked.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {


namespace {

using packed::kChunkHeader;

// The element at host index `i` as text; a string array's element is not copied.
const String& ElementText(const SafeArray& array, int32_t i, String& scratch) {
  const Variant& v = array.at(i);
  if (v.isString()) return v.asString();
  scratch = ToString(v);
  return scratch;
}

}  // namespace

String clsZKString::ArrayJoin(const SafeArray& DataArray) const {
  // Walking from index 0, not from the lower bound, is what the format's readers expect:
  // an array starting above 0 fails on index 0 with subscript out of range.
  const int32_t upper = DataArray.ubound(1);
  String scratch;
  int64_t total = 0;
  for (int32_t i = 0; i <= upper; ++i) {
    total += static_cast<int64_t>(ElementText(DataArray, i, scratch).size()) + kChunkHeader;
    CheckedLong(total);
  }
  String result(static_cast<size_t>(total), u' ');
  size_t p = 0;
  for (int32_t i = 0; i <= upper; ++i) {
    const String& element = ElementText(DataArray, i, scratch);
    packed::WriteField(&result[p], static_cast<int64_t>(element.size() + kChunkHeader),
                       kChunkHeader);
    element.copy(&result[p + kChunkHeader], element.size());
    p += element.size() + kChunkHeader;
  }
  return result;
}

SafeArray clsZKString::ArraySplit(const String& DataString) const {
  if (DataString.empty()) return SafeArray(VarType::kString, {Bounds{-1, -1}});
  std::vector<String> elements;
  for (StringView chunk : packed::SplitChunks(DataString)) elements.emplace_back(chunk);
  return SafeArray::FromStrings(elements);
}

}  // namespace tsruntime
