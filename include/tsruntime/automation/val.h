// The host runtime's `Val`: the number a text begins with, 0 when it begins with none.
//
//   Val(u" 1615 198th Street") == 1615198   (spaces, tabs and line feeds are skipped)
//   Val(u"2.5e1x") == 25    Val(u"&HFF") == 255    Val(u"&HFFFF") == -1    Val(u"abc") == 0
//
// Unlike the conversions of convert.h it never fails and ignores the locale: the decimal
// separator is always ".". "&H" and "&O" read hexadecimal and octal; up to four hex
// digits (six octal) are a 16-bit value, up to eight (eleven) a 32-bit one, both signed;
// longer ones are overflow (6). "E" or "D" start an exponent.
#pragma once

#include "tsruntime/automation/string.h"

namespace tsruntime {

double Val(StringView text);

}  // namespace tsruntime
