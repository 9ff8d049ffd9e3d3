// Turns a fuzzer's bytes into the values the library's entry points take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tsruntime/automation/string.h"

namespace tsruntime::fuzz {

// The bytes as UTF-16 code units, unpaired surrogates and NULs included: hosts can
// hand the library any code unit sequence.
inline String Utf16(const uint8_t* data, size_t size) {
  String text(size / 2, u'\0');
  if (!text.empty()) std::memcpy(text.data(), data, text.size() * 2);
  return text;
}

}  // namespace tsruntime::fuzz
