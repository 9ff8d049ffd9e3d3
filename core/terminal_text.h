// Text for the terminal: UTF-16 written in the character set of the user's locale.
#pragma once

#include <cstdio>
#include <string>

#include "tsruntime/automation/string.h"

namespace tsruntime {

// The bytes of `text` in the character set the environment's locale names (LC_ALL,
// LC_CTYPE, LANG). The C locale's ASCII counts as UTF-8, so that Russian text is not
// lost on a terminal left unconfigured. Characters the set lacks become "?".
std::string TerminalBytes(StringView text);

// Writes `text` to `stream` as `TerminalBytes` and flushes it.
void WriteToTerminal(std::FILE* stream, StringView text);

}  // namespace tsruntime
