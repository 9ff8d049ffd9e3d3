// Strings as the automation runtime knows them: counted UTF-16 text.
//
// Lengths and positions everywhere in the library count UTF-16 code units, as the host
// language's own string functions do. UTF-8 appears only at the operating-system boundary
// (file names, the terminal), through `ToUtf8` and `FromUtf8`.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tsruntime {

using String = std::u16string;
using StringView = std::u16string_view;

// UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
std::string ToUtf8(StringView text);

// UTF-8 to UTF-16. Malformed sequences become U+FFFD.
String FromUtf8(std::string_view text);

// ASCII text to UTF-16, for member names and fixed English texts.
String FromAscii(std::string_view text);

// Appends a whole number in plain decimal digits, "-" first when negative: the text of
// an Integer, Long or Byte in every locale.
void AppendDecimal(String& out, int64_t value);

// Case-insensitive equality of ASCII letters only; used for member and class names,
// which the automation runtime matches without regard to case.
bool EqualsAsciiNoCase(StringView a, StringView b);

}  // namespace tsruntime
