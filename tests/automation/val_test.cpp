// Val: the number a text begins with, as the host runtime reads it.
#include "support/outcome.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/automation/val.h"

namespace tsruntime {
namespace {

using testing::Num;
using testing::Outcome;

TEST(Val, ReadsTheLeadingNumberAndNothingElse) {
  // The decimal point is "." whatever the locale says.
  ScopedLocale russian{"ru_RU"};
  const struct { const char* what; String text; std::string expected; } rows[] = {
      {"a plain number", u"255", "255"}, {"text without a number is 0", u"abc", "0"},
      {"the empty text is 0", u"", "0"},
      {"reading stops at the first stray character", u"12abc", "12"},
      {"spaces, tabs and line feeds are skipped anywhere", u" 1 6\t1\n5 x", "1615"},
      {"a carriage return stops the reading", u"1\r2", "1"},
      {"a sign, a fraction and an exponent", u"-2.5e1x", "-25"},
      {"D starts an exponent too", u"1D3", "1000"},
      {"an exponent without digits is not read", u"7e", "7"},
      {"a comma is no decimal separator", u"1,5", "1"}, {"a lone sign is 0", u"-", "0"},
      {"a fraction without an integer part", u".5", "0.5"},
      {"a second point ends the number", u"1.2.3", "1.2"}, {"hexadecimal", u"&HFF", "255"},
      {"four hex digits are a 16-bit value", u"&HFFFF", "-1"},
      {"five hex digits are a 32-bit value", u"&H1FFFF", "131071"},
      {"eight hex digits wrap into 32 bits", u"&HFFFFFFFF", "-1"},
      {"nine hex digits overflow", u"&H1FFFFFFFF", "error 6"}, {"octal", u"&O17", "15"},
      {"a bare ampersand before octal digits", u"&17", "15"},
      {"an ampersand before anything else is 0", u"&X1", "0"},
      {"a huge exponent overflows", u"1e400", "error 6"}, {"a tiny one reads as 0", u"1e-400", "0"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Outcome([&] { return Num(Val(row.text)); }), row.expected) << row.what;
}

}  // namespace
}  // namespace tsruntime
