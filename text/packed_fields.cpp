#include "packed_fields.h"

#include "tsruntime/automation/checked.h"
#include "tsruntime/automation/convert.h"

namespace tsruntime::packed {

void WriteField(char16_t* at, int64_t value, size_t width) {
  // The common case, a length that fits, is written from the right with no sign.
  if (value >= 0 && width <= 18) {
    auto rest = static_cast<uint64_t>(value);
    for (size_t i = width; i > 0; --i) {
      at[i - 1] = static_cast<char16_t>(u'0' + rest % 10);
      rest /= 10;
    }
    if (rest == 0) return;
  }
  uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : value;
  char digits[20];  // the last first
  size_t count = 0;
  do {
    digits[count++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  // The field is the sign, the zeros that pad the digits to the width, then the digits,
  // cut to the width.
  size_t i = 0;
  auto put = [&](char c) {
    if (i < width) at[i++] = static_cast<char16_t>(c);
  };
  if (value < 0) put('-');
  for (size_t zeros = count < width ? width - count : 0; zeros > 0; --zeros) put('0');
  while (count > 0) put(digits[--count]);
}

int64_t ReadField(StringView data, size_t p, size_t width) {
  const StringView field = p < data.size() ? data.substr(p, width) : StringView();
  uint64_t value = 0;
  unsigned not_digit = field.size() != width;
  for (char16_t c : field) {
    const unsigned digit = static_cast<unsigned>(c) - u'0';
    not_digit |= digit > 9;
    value = value * 10 + digit;
  }
  return not_digit == 0 ? static_cast<int64_t>(value) : ToLong(Variant(String(field)));
}

bool ChunkReader::Next(StringView& chunk) {
  const int64_t length = static_cast<int64_t>(data_.size());
  if (p_ >= length) {
    // A non-empty text always holds a chunk, if an empty one.
    if (any_ || data_.empty()) return false;
    any_ = true;
    chunk = StringView();
    return true;
  }
  const int64_t size = ReadField(data_, static_cast<size_t>(p_ - 1), kChunkHeader);
  if (size < static_cast<int64_t>(kChunkHeader)) RaiseRuntime(RuntimeError::kInvalidCall);
  const int64_t from = p_ - 1 + static_cast<int64_t>(kChunkHeader);
  chunk = from < length ? data_.substr(static_cast<size_t>(from),
                                       static_cast<size_t>(size) - kChunkHeader)
                        : StringView();
  p_ = CheckedLong(p_ + size);
  any_ = true;
  return true;
}

std::vector<StringView> SplitChunks(StringView data) {
  std::vector<StringView> chunks;
  ChunkReader reader(data);
  for (StringView chunk; reader.Next(chunk);) chunks.push_back(chunk);
  if (chunks.empty()) chunks.emplace_back();
  return chunks;
}

}  // namespace tsruntime::packed
