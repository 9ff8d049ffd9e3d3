// Raw lines of INI text: split and joined at CR LF only. Internal to the library.
#pragma once

#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime::ini_detail {

inline constexpr StringView kLineBreak = u"\r\n";
// A line that ends in blank + underscore goes on: the mark as it stands in a file, and
// turned around (LF before CR) so that splitting at CR LF leaves the lines together.
inline constexpr StringView kContinued = u" _\r\n";
inline constexpr StringView kContinuedTurned = u" _\n\r";

// The parts of `text` between occurrences of `separator`, empty parts kept; "" is one
// empty part.
std::vector<String> SplitAt(StringView text, StringView separator);
// The parts with `separator` between them.
String JoinWith(const std::vector<String>& parts, StringView separator);

}  // namespace tsruntime::ini_detail
