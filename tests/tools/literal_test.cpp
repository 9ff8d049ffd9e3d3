// Argument literals: the forms read, the exact printed forms, print-then-read round trips
// and the faults reported for text that is not a literal.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "literal_parser.h"
#include "literal_printer.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/locale.h"

namespace tsrt {
namespace {

using namespace tsruntime;

constexpr VarType kAny = VarType::kVariant, kLong = VarType::kLong, kStr = VarType::kString;

Variant Int(int16_t n) { return Variant(n); }
Variant Lng(int32_t n) { return Variant(n); }
Variant Byt(uint8_t n) { return Variant(n); }
Variant Cur(int64_t raw) { return Variant(Currency::FromRaw(raw)); }
Variant Dec(const char* text) { return Variant(Decimal::ParsePlain(text).value()); }
Variant Text(const char16_t* s) { return Variant(String(s)); }
Variant DateOf(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Variant(Date::FromParts(DateParts{y, mo, d, h, mi, s}));
}
// An array of `element` with `dims`, holding `items` in storage order.
Variant Arr(VarType element, std::vector<Bounds> dims, std::vector<Variant> items) {
  SafeArray a(element, std::move(dims));
  for (size_t k = 0; k < items.size(); ++k) {
    if (element == VarType::kByte) a.bytes()[k] = items[k].asByte();
    else a.elements()[k] = items[k];
  }
  return Variant(std::move(a));
}
std::string Repeat(const std::string& s, int n) { return n > 0 ? s + Repeat(s, n - 1) : ""; }

// Forms the printer never writes, the rules that choose a type and named arguments, each
// shown by the canonical form it reads as (the printed forms are pinned by the next test).
TEST(Literal, ReadsEveryFormAsItsTypeAndValue) {
  const struct { const char* word; const char* reads_as; } cases[] = {
      {"32768", "32768"}, {"2147483648", "2147483648#"}, {"5%", "5"}, {"2E3", "2000#"},
      // Currency rounds past the fourth decimal half to even
      {"0.00015@", "0.0002@"}, {"0.00025@", "0.0002@"}, {"0.000251@", "0.0003@"},
      {"\"a\"&ChrW(10)  &  \"b\"", R"("a" & vbLf & "b")"},
      {"ChrW(-1) & chrw(65) & CHR(192)", "ChrW(65535) & \"AА\""},  // byte 192 of the ANSI page
      {"vbNewLine & vbNullChar & vbNullString", "vbCrLf & ChrW(0)"},
      {"#05.03.2024 14:07#", "#2024-03-05 14:07:00#"}, {"#14:07:09#", "#1899-12-30 14:07:09#"},
      {"false", "False"}, {"EMPTY", "Empty"}, {"null", "Null"}, {"NOTHING", "Nothing"},
      {"CLng(\"1.5\")", "2&"}, {"CDate(45000.5)", "#2023-03-15 12:00:00#"},
      {"Array( undimensioned ) As String", "Array(Undimensioned) As String"},
      {"Array(1 To 2, 0 To 0: 1, 2.5!) As Variant", "Array(1 To 2, 0 To 0: 1, 2.5!)"},
      {"Array(0 To 1: 1, 2.5) As Integer", "Array(1, 2) As Integer"},
      // hexadecimal and octal as the host language types them; enumeration members
      {"&H8000", "-32768"}, {"&hffff", "-1"}, {"&HFFFF&", "65535"}, {"&H10000", "65536"},
      {"&HFFFFFFFF", "-1&"}, {"&o177777", "-1"}, {".5", "0.5"},
      {"hkey_current_user", "-2147483647"}, {"xeREGISTRY_HKEY.HKEY_LOCAL_MACHINE", "-2147483646"},
      {"Step := 2", "Step:=2"}, {"\"Step:=2\"", "\"Step:=2\""}, {"   ", "Missing"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.word);
    const Argument a = ParseArgument(c.word);
    EXPECT_EQ((a.name.empty() ? "" : ToUtf8(a.name) + ":=") + PrintLiteral(a.value), c.reads_as);
  }
}

TEST(Literal, PrintsTheShortestFormThatReadsBackAsTheSameType) {
  const struct { Variant value; VarType declared; const char* expected; } cases[] = {
      {Int(5), kAny, "5"}, {Lng(5), kAny, "5&"}, {Lng(-32768), kAny, "-32768&"},
      {Lng(70000), kAny, "70000"}, {Variant(5.0), kAny, "5#"}, {Variant(0.1f), kAny, "0.1!"},
      {Cur(-12345678), kAny, "-1234.5678@"}, {Byt(5), kAny, "CByte(5)"},
      {Dec("-1.50"), kAny, "CDec(\"-1.5\")"}, {Variant(std::nan("")), kAny, "CDbl(\"NaN\")"},
      // a declared type drops the mark only where the member's conversion restores it
      {Lng(0), kLong, "0"}, {Lng(5), VarType::kInteger, "5&"}, {Byt(200), VarType::kByte, "200"},
      {Variant(5.0), VarType::kDouble, "5"}, {Variant(-0.0), VarType::kDouble, "-0#"},
      {Text(u"a\"b\r\n\n\r\t\a"), kAny, R"("a""b" & vbCrLf & vbLf & vbCr & vbTab & ChrW(7))"},
      {Text(u"\u00A0x\u200B\uFFFF"), kAny, R"(ChrW(160) & "x" & ChrW(8203) & ChrW(65535))"},
      {Variant(String(u"\U0001F600") + char16_t{0xD800}), kAny, "\"\U0001F600\" & ChrW(55296)"},
      {Variant(Date{1e10}), kAny, "CDate(1E+10)"},
      {Arr(kAny, {{0, 1}}, {Int(1), Text(u"a")}), kAny, R"(Array(1, "a"))"},
      {Arr(kStr, {{0, 1}, {0, 1}}, {Text(u"a"), Text(u"b"), Text(u"c"), Text(u"d")}), kAny,
       R"(Array(0 To 1, 0 To 1: "a", "b", "c", "d") As String)"},
      {Arr(kAny, {{0, 1}}, {Arr(kLong, {{0, 0}}, {Lng(1)}), Lng(2)}), kAny,
       "Array(Array(1) As Long, 2&)"}};
  for (const auto& c : cases) {
    EXPECT_EQ(PrintLiteral(c.value, c.declared), c.expected);
  }
}

// Printed plainly, each value reads back identical; printed for its own declared type,
// it comes back once converted to that type. In a locale with a decimal comma.
TEST(Literal, EveryPrintedValueReadsBackAsTheSameTypeAndValue) {
  ScopedLocale russian("ru_RU");
  String every_unit;  // lone surrogates included
  for (uint32_t c = 0; c <= 0xFFFF; ++c) every_unit += static_cast<char16_t>(c);
  using Limits = std::numeric_limits<double>;
  const Variant values[] = {
      Variant(), Variant::Null(), Variant(true), Variant::Nothing(), Variant::Missing(),
      Variant(ErrorValue{-2147220803}), Int(INT16_MIN), Lng(-32768), Lng(INT32_MIN), Byt(255),
      Variant(-0.0), Variant(123456789012345680.0), Variant(Limits::max()),
      Variant(Limits::denorm_min()), Variant(-Limits::infinity()), Variant(std::nan("")),
      Variant(-1e-7f), Variant(std::numeric_limits<float>::max()), Cur(INT64_MIN), Cur(INT64_MAX),
      Dec("-0.0000000000000000000000000001"), Dec("79228162514264337593543950335"),
      DateOf(9999, 12, 31, 23, 59, 59), DateOf(100, 1, 1), Variant(Date{45000.123456789}),
      Text(u"\"\"\""), Text(u"\r\r\n\n"), Variant(every_unit), Variant(SafeArray(kAny)),
      Arr(VarType::kDouble, {{INT32_MIN, INT32_MIN + 1}}, {Variant(5.0), Variant(-0.0)}),
      Arr(VarType::kDate, {{0, 1}}, {DateOf(2024, 3, 5), Variant(Date{0.1})}),
      Arr(VarType::kByte, {{1, 1}}, {Byt(128)}), Arr(VarType::kObject, {{0, 0}}, {Variant::Nothing()}),
      Arr(kStr, {{1, 2}, {-1, 0}, {0, 0}}, {Text(u"a"), Text(u"b"), Text(u"c"), Text(u"d")}),
      Arr(kAny, {{0, 1}}, {Arr(kAny, {{0, -1}}, {}), Variant(SafeArray(kLong))})};
  for (const Variant& v : values) {
    for (const VarType declared : {kAny, v.type()}) {
      if (declared != kAny && (v.isArray() || v.isObject() || v.type() == VarType::kError)) break;
      const std::string printed = PrintLiteral(v, declared);
      try {
        Variant back = ParseLiteral(printed);
        if (declared != kAny) back = ChangeType(back, declared);
        // Printed again, so that -0 and 0 differ.
        EXPECT_TRUE(back == v && PrintLiteral(back) == PrintLiteral(v))
            << printed.substr(0, 200) << " reads back as " << PrintLiteral(back).substr(0, 200);
      } catch (const std::exception& e) {
        ADD_FAILURE() << printed.substr(0, 200) << " does not read back: " << e.what();
      }
    }
  }
}

// One row per fault the reader reports; the whole message, column included.
TEST(Literal, MalformedArgumentsAreRefusedWithTheFaultAndItsColumn) {
  const struct { std::string word; const char* message; } cases[] = {
      {"Step:=", "expected a literal at column 7"},
      {"HKEY_CURENT_USER", "unknown word 'HKEY_CURENT_USER' (text goes in double quotes) at "
                           "column 1; did you mean HKEY_CURRENT_USER?"},
      {"&H100000000", "out of range for Long at column 1"},
      {"\"a\" & &HFF", "only quoted text, ChrW(n), Chr(n) and vb text constants join with '&' at "
                       "column 7"},
      {"\"open", "text has no closing '\"' at column 1"},
      {"5x", "unexpected character after the number at column 2"},
      {"1.5%", "an Integer literal takes no decimal point or exponent at column 1"},
      {"#2024-02-30#", "not a date (write #yyyy-mm-dd hh:nn:ss# or #yyyy-mm-dd#) at column 1"},
      {"CInt(40000)", "CInt cannot take this value: Overflow at column 6"},
      {"<Object clsZKString>", "objects cannot be written as literals at column 1"},
      {"Array(3 To 1:)", "an upper bound may not be below the lower bound - 1 at column 12"},
      {"Array(1, 256) As Byte", "element 2 cannot be Byte: Overflow at column 1"},
      {"Array(-2147483648 To 2147483647, -2147483648 To 2147483647:)",
       "the bounds describe too large an array at column 1"},
      {"Array(" + Repeat("0 To 0, ", 60) + "0 To 0: 1)", "too many dimensions at column 493"},
      {Repeat("Array(", 100) + "1" + Repeat(")", 100), "literal nested too deeply at column 385"}};
  for (const auto& c : cases) {
    try {
      ADD_FAILURE() << c.word << " was read as " << PrintLiteral(ParseArgument(c.word).value);
    } catch (const LiteralError& e) {
      EXPECT_STREQ(e.what(), c.message) << "for " << c.word;
    }
  }
}

}  // namespace
}  // namespace tsrt
