// Text as UTF-16LE bytes, the form the registry store keeps strings in and its export
// files are written in.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime {

inline std::vector<uint8_t> Utf16LeBytes(StringView text) {
  std::vector<uint8_t> bytes;
  bytes.reserve(text.size() * 2);
  for (char16_t c : text) {
    bytes.push_back(static_cast<uint8_t>(c & 0xff));
    bytes.push_back(static_cast<uint8_t>(c >> 8));
  }
  return bytes;
}

// An odd last byte is not a character and is dropped.
inline String FromUtf16LeBytes(std::span<const uint8_t> bytes) {
  String text(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
  }
  return text;
}

}  // namespace tsruntime
