// Byte strings through the ANSI and OEM code pages.
//
// A byte string carries one byte per character: byte b is the character that the
// ANSI code page assigns to b. Every byte 0-255 round-trips, including bytes the code
// page leaves unassigned (they map to U+0000 + b). A character that the code page
// cannot represent becomes '?', the code page's replacement character.
//
// The code pages are process-wide settings, 1251 (ANSI) and 866 (OEM) by default; set
// them before objects start converting text.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime {

int AnsiCodePage();
int OemCodePage();
// Raises invalid call (5) for a code page that is not a single-byte one ICU knows.
void SetAnsiCodePage(int code_page);
void SetOemCodePage(int code_page);

// Bytes to text and back through a code page.
String DecodeBytes(int code_page, std::span<const uint8_t> bytes);
std::vector<uint8_t> EncodeBytes(int code_page, StringView text);

inline String AnsiToString(std::span<const uint8_t> bytes) {
  return DecodeBytes(AnsiCodePage(), bytes);
}
inline std::vector<uint8_t> StringToAnsi(StringView text) {
  return EncodeBytes(AnsiCodePage(), text);
}

// The text after a trip to ANSI bytes and back: characters the code page lacks
// become '?'.
String AnsiRoundTrip(StringView text);

}  // namespace tsruntime
