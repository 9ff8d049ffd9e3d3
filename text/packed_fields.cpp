#include "packed_fields.h"

#include <string>

#include "tsruntime/automation/checked.h"
#include "tsruntime/automation/convert.h"

namespace tsruntime::packed {

void WriteField(char16_t* at, int64_t value, size_t width) {
  const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : value;
  const std::string digits = std::to_string(magnitude);
  std::string field = value < 0 ? "-" : "";
  if (digits.size() < width) field.append(width - digits.size(), '0');
  field += digits;
  for (size_t i = 0; i < width; ++i) at[i] = static_cast<char16_t>(field[i]);
}

int64_t ReadField(StringView data, size_t p, size_t width) {
  const StringView field = p < data.size() ? data.substr(p, width) : StringView();
  int64_t value = 0;
  bool plain = field.size() == width;
  for (char16_t c : field) {
    if (c < u'0' || c > u'9') {
      plain = false;
      break;
    }
    value = value * 10 + (c - u'0');
  }
  return plain ? value : ToLong(Variant(String(field)));
}

std::vector<StringView> SplitChunks(StringView data) {
  std::vector<StringView> chunks;
  int64_t p = 1;
  const int64_t length = static_cast<int64_t>(data.size());
  while (p < length) {
    const int64_t chunk = ReadField(data, static_cast<size_t>(p - 1), kChunkHeader);
    if (chunk < static_cast<int64_t>(kChunkHeader)) RaiseRuntime(RuntimeError::kInvalidCall);
    const int64_t from = p - 1 + static_cast<int64_t>(kChunkHeader);
    chunks.push_back(from < length ? data.substr(static_cast<size_t>(from),
                                                 static_cast<size_t>(chunk) - kChunkHeader)
                                   : StringView());
    p = CheckedLong(p + chunk);
  }
  if (chunks.empty()) chunks.emplace_back();
  return chunks;
}

}  // namespace tsruntime::packed
