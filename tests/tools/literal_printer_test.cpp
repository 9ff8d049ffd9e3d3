// Printing values as literals, and reading every printed value back to the same type
// and value.
#include "literal_printer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "literal_parser.h"
#include "tools/test_support.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsrt {
namespace {

using namespace tsrt_test;

constexpr double kInf = std::numeric_limits<double>::infinity();

struct PrintCase {
  Variant value;
  VarType declared;
  const char* expected;
};

void ExpectPrints(const std::vector<PrintCase>& cases) {
  for (const PrintCase& c : cases) {
    EXPECT_EQ(PrintLiteral(c.value, c.declared), c.expected)
        << "a " << tsruntime::ToUtf8(tsruntime::TypeName(c.value.type())) << " declared "
        << tsruntime::ToUtf8(tsruntime::TypeName(c.declared));
  }
}

constexpr VarType kAny = VarType::kVariant;

TEST(LiteralPrinter, NumbersCarryASuffixOnlyWhereTheBareFormWouldReadAsAnotherType) {
  ExpectPrints({
      {Variant(int16_t{5}), kAny, "5"},
      {Variant(int16_t{-32768}), kAny, "-32768"},
      {Variant(int32_t{5}), kAny, "5&"},
      {Variant(int32_t{-32768}), kAny, "-32768&"},
      {Variant(int32_t{70000}), kAny, "70000"},
      {Variant(int32_t{INT32_MIN}), kAny, "-2147483648"},
      {Variant(1.5), kAny, "1.5"},
      {Variant(5.0), kAny, "5#"},
      {Variant(70000.0), kAny, "70000#"},
      {Variant(-0.0), kAny, "-0#"},
      {Variant(0.1), kAny, "0.1"},
      {Variant(1e20), kAny, "1E+20"},
      {Variant(1e-7), kAny, "1E-7"},
      {Variant(-2.5e-300), kAny, "-2.5E-300"},
      {Variant(1.0 / 3), kAny, "0.3333333333333333"},
      {Variant(1.5f), kAny, "1.5!"},
      {Variant(0.1f), kAny, "0.1!"},
      {Variant(5.0f), kAny, "5!"},
      {Variant(3e38f), kAny, "3E+38!"},
      {Variant(Currency::FromRaw(12345600)), kAny, "1234.56@"},
      {Variant(Currency::FromRaw(50000)), kAny, "5@"},
      {Variant(Currency::FromRaw(-1)), kAny, "-0.0001@"},
      {Variant(Currency::FromRaw(0)), kAny, "0@"},
      {Variant(Currency::FromRaw(INT64_MIN)), kAny, "-922337203685477.5808@"},
      {Variant(uint8_t{5}), kAny, "CByte(5)"},
      {DecimalOf("-1.50"), kAny, "CDec(\"-1.5\")"},
      {DecimalOf("79228162514264337593543950335"), kAny, "CDec(\"79228162514264337593543950335\")"},
      {Variant(std::nan("")), kAny, "CDbl(\"NaN\")"},
      {Variant(-kInf), kAny, "CDbl(\"-Infinity\")"},
      {Variant(static_cast<float>(kInf)), kAny, "CSng(\"Infinity\")"},
  });
}

TEST(LiteralPrinter, ADeclaredTypeDropsTheSuffixOfExactTypesOnly) {
  ExpectPrints({
      {Variant(int32_t{0}), VarType::kLong, "0"},
      {Variant(int32_t{-1}), VarType::kLong, "-1"},
      {Variant(int32_t{5}), VarType::kInteger, "5&"},
      {Variant(5.0), VarType::kDouble, "5"},
      {Variant(5.0), VarType::kLong, "5#"},
      {Variant(uint8_t{200}), VarType::kByte, "200"},
      {Variant(1.5f), VarType::kSingle, "1.5!"},
      {Variant(Currency::FromRaw(10000)), VarType::kCurrency, "1@"},
      {DecimalOf("2"), VarType::kDecimal, "CDec(\"2\")"},
  });
}

TEST(LiteralPrinter, TextIsQuotedAndInvisibleCharactersArePrintedAsChrW) {
  ExpectPrints({
      {Text(u""), kAny, R"("")"},
      {Text(u"text"), kAny, R"("text")"},
      {Text(u"a\"b"), kAny, R"("a""b")"},
      {Text(u"\""), kAny, R"("""")"},
      {Text(u"привет"), kAny, "\"привет\""},
      {Text(u"a\r\nb"), kAny, R"("a" & vbCrLf & "b")"},
      {Text(u"\n\r"), kAny, "vbLf & vbCr"},
      {Text(u"\tx"), kAny, R"(vbTab & "x")"},
      {Text(u"\a"), kAny, "ChrW(7)"},
      {Variant(String(u"a\0b", 3)), kAny, R"("a" & ChrW(0) & "b")"},
      {Text(u"\u007F\u0085\u00A0\u00AD"), kAny, "ChrW(127) & ChrW(133) & ChrW(160) & ChrW(173)"},
      {Text(u"x\u200By\uFEFF"), kAny, R"("x" & ChrW(8203) & "y" & ChrW(65279))"},
      {Text(u"\uFFFD\uFFFF"), kAny, "\"\uFFFD\" & ChrW(65535)"},
      {Text(u"\U0001F600"), kAny, "\"\U0001F600\""},
      {Variant(String(1, char16_t{0xD800})), kAny, "ChrW(55296)"},
      {Variant(String(u"a") + char16_t{0xDC00} + u"b"), kAny, R"("a" & ChrW(56320) & "b")"},
  });
}

TEST(LiteralPrinter, OtherScalarsAndObjects) {
  ExpectPrints({
      {Variant(), kAny, "Empty"},
      {Variant::Null(), kAny, "Null"},
      {Variant(true), kAny, "True"},
      {Variant(false), VarType::kBoolean, "False"},
      {Variant::Nothing(), kAny, "Nothing"},
      {Variant(tsruntime::New<tsruntime::clsZKRunTimeLib>()), kAny, "<Object clsZKRunTimeLib>"},
      {Variant::Missing(), kAny, "Missing"},
      {Variant(ErrorValue{2042}), kAny, "CVErr(2042)"},
      {DateOf(2024, 3, 5, 14, 7, 9), kAny, "#2024-03-05 14:07:09#"},
      {DateOf(2024, 3, 5), VarType::kDate, "#2024-03-05 00:00:00#"},
      {DateOf(100, 1, 1), kAny, "#0100-01-01 00:00:00#"},
      {Variant(Date{-1.25}), kAny, "#1899-12-29 06:00:00#"},
      {Variant(Date{0.00001}), kAny, "CDate(1E-5)"},
      {Variant(Date{1e10}), kAny, "CDate(1E+10)"},
      {Variant(Date{std::nan("")}), kAny, "CDate(CDbl(\"NaN\"))"},
  });
}

TEST(LiteralPrinter, ArraysShowBoundsWhereTheyAreNotZeroBasedAndTheirElementType) {
  ExpectPrints({
      {MakeArray(kAny, {{0, 1}}, {Variant(int16_t{1}), Text(u"a")}), kAny, R"(Array(1, "a"))"},
      {MakeArray(kAny, {{0, -1}}, {}), kAny, "Array()"},
      {Variant(SafeArray(kAny)), kAny, "Array(Undimensioned)"},
      {Variant(SafeArray(VarType::kString)), kAny, "Array(Undimensioned) As String"},
      {MakeArray(VarType::kString, {{0, -1}}, {}), kAny, "Array() As String"},
      {MakeArray(kAny, {{5, 4}}, {}), kAny, "Array(5 To 4:)"},
      {MakeArray(VarType::kString, {{-1, -1}}, {Text(u"")}), kAny,
       R"(Array(-1 To -1: "") As String)"},
      {MakeArray(VarType::kLong, {{0, 1}}, {Variant(int32_t{5}), Variant(int32_t{70000})}), kAny,
       "Array(5, 70000) As Long"},
      {MakeArray(VarType::kString, {{0, 1}, {0, 2}},
                 {Text(u"a"), Text(u"b"), Text(u"c"), Text(u"d"), Text(u"e"), Text(u"f")}),
       kAny, R"(Array(0 To 1, 0 To 2: "a", "b", "c", "d", "e", "f") As String)"},
      {MakeArray(VarType::kByte, {{1, 3}},
                 {Variant(uint8_t{0}), Variant(uint8_t{7}), Variant(uint8_t{255})}),
       kAny, "Array(1 To 3: 0, 7, 255) As Byte"},
      {MakeArray(kAny, {{0, 1}},
                 {MakeArray(VarType::kLong, {{0, 0}}, {Variant(int32_t{1})}), Variant(int32_t{2})}),
       kAny, "Array(Array(1) As Long, 2&)"},
  });
}

// Values whose printed form must read back to the identical type and value.
std::vector<Variant> RoundTripValues() {
  const double kMaxDouble = std::numeric_limits<double>::max();
  const float kMaxSingle = std::numeric_limits<float>::max();
  std::vector<Variant> values = {
      // scalars without numbers
      Variant(), Variant::Null(), Variant(true), Variant(false), Variant::Nothing(),
      Variant::Missing(), Variant(ErrorValue{-2147220803}),
      // whole numbers at the edges of their types
      Variant(int16_t{0}), Variant(int16_t{-1}), Variant(int16_t{INT16_MIN}),
      Variant(int16_t{INT16_MAX}), Variant(int32_t{0}), Variant(int32_t{-32768}),
      Variant(int32_t{32768}), Variant(int32_t{INT32_MIN}), Variant(int32_t{INT32_MAX}),
      Variant(uint8_t{0}), Variant(uint8_t{255}),
      // floating point, including the extremes and the values without a literal
      Variant(0.0), Variant(-0.0), Variant(0.1), Variant(-1.0 / 3), Variant(1e15),
      Variant(123456789012345680.0), Variant(2147483648.0), Variant(kMaxDouble),
      Variant(std::numeric_limits<double>::min()),
      Variant(std::numeric_limits<double>::denorm_min()),
      Variant(kInf), Variant(-kInf), Variant(std::nan("")), Variant(0.1f), Variant(-1e-7f),
      Variant(16777216.0f), Variant(kMaxSingle), Variant(std::numeric_limits<float>::denorm_min()),
      Variant(static_cast<float>(-kInf)),
      // exact decimals
      Variant(Currency::FromRaw(INT64_MIN)), Variant(Currency::FromRaw(INT64_MAX)),
      Variant(Currency::FromRaw(1)), Variant(Currency::FromRaw(-123456789)), DecimalOf("0"),
      DecimalOf("-0.0000000000000000000000000001"), DecimalOf("79228162514264337593543950335"),
      DecimalOf("-7.9228162514264337593543950335"),
      // dates, whole seconds or not
      DateOf(2024, 3, 5, 14, 7, 9), DateOf(100, 1, 1), DateOf(9999, 12, 31, 23, 59, 59),
      DateOf(1899, 12, 30), DateOf(1899, 12, 29, 6, 0, 0), DateOf(1600, 2, 29, 12, 0, 1),
      Variant(Date{0.1}), Variant(Date{-657434.0}), Variant(Date{45000.123456789}),
      // text
      Text(u""), Text(u"\"\"\""), Text(u"a\r\nb\r\n"), Text(u"\r\r\n\n"),
      Text(u"Сумма: 1 234,56 руб."), Text(u"\U0001F600 & ChrW(7)"),
      // arrays: empty, undimensioned, odd bounds, every element type, nested
      MakeArray(kAny, {{0, -1}}, {}), Variant(SafeArray(kAny)), Variant(SafeArray(VarType::kLong)),
      MakeArray(kAny, {{5, 4}}, {}), MakeArray(VarType::kString, {{-1, -1}}, {Text(u"")}),
      MakeArray(VarType::kString, {{0, -1}, {0, -1}}, {}),
      MakeArray(VarType::kInteger, {{INT32_MAX, INT32_MAX}}, {Variant(int16_t{3})}),
      MakeArray(VarType::kDouble, {{INT32_MIN, INT32_MIN + 1}}, {Variant(5.0), Variant(0.5)}),
      MakeArray(VarType::kCurrency, {{0, 0}}, {Variant(Currency::FromRaw(1))}),
      MakeArray(VarType::kDate, {{1, 1}}, {DateOf(2024, 3, 5)}),
      MakeArray(VarType::kBoolean, {{0, 1}}, {Variant(true), Variant(false)}),
      MakeArray(VarType::kObject, {{0, 0}}, {Variant::Nothing()}),
      MakeArray(VarType::kSingle, {{0, 0}}, {Variant(0.1f)}),
      MakeArray(VarType::kDecimal, {{0, 0}}, {DecimalOf("1.5")}),
      MakeArray(VarType::kByte, {{0, 2}}, {Variant(uint8_t{0}), Variant(uint8_t{128}),
                                          Variant(uint8_t{255})}),
      MakeArray(VarType::kString, {{1, 2}, {-1, 0}, {0, 1}},
                {Text(u"a"), Text(u"b"), Text(u"c"), Text(u"d"), Text(u"e"), Text(u"f"),
                 Text(u"g"), Text(u"h")}),
      MakeArray(kAny, {{0, 2}},
                {MakeArray(kAny, {{1, 1}}, {Variant(int32_t{1})}),
                 Variant(SafeArray(VarType::kString)),
                 MakeArray(VarType::kLong, {{0, 1}}, {Variant(int32_t{1}), Variant(int32_t{2})})}),
  };
  String every_unit;  // lone surrogates included
  for (uint32_t c = 0; c <= 0xFFFF; ++c) every_unit += static_cast<char16_t>(c);
  values.push_back(Variant(every_unit));
  return values;
}

TEST(LiteralPrinter, EveryPrintedValueReadsBackAsTheSameTypeAndValue) {
  for (const Variant& v : RoundTripValues()) {
    const std::string printed = PrintLiteral(v);
    Variant back;
    try {
      back = ParseLiteral(printed);
    } catch (const LiteralError& e) {
      ADD_FAILURE() << printed.substr(0, 200) << " does not read back: " << e.what();
      continue;
    }
    EXPECT_TRUE(back == v) << printed.substr(0, 200) << " reads back as "
                           << PrintLiteral(back).substr(0, 200);
  }
}

// A bare number printed for a declared type comes back once the member converts it.
TEST(LiteralPrinter, ValuesPrintedForTheirDeclaredTypeComeBackThroughThatType) {
  for (const Variant& v : RoundTripValues()) {
    if (v.isArray() || v.isObject() || v.type() == VarType::kError) continue;
    const std::string printed = PrintLiteral(v, v.type());
    Variant back;
    try {
      back = tsruntime::ChangeType(ParseLiteral(printed), v.type());
    } catch (const std::exception& e) {
      ADD_FAILURE() << printed.substr(0, 200) << " does not read back: " << e.what();
      continue;
    }
    EXPECT_TRUE(back == v) << printed.substr(0, 200) << " reads back as "
                           << PrintLiteral(back).substr(0, 200);
  }
}

TEST(LiteralPrinter, LocaleDoesNotChangeHowNumbersPrint) {
  tsruntime::ScopedLocale russian("ru_RU");
  ExpectPrints({
      {Variant(1.5), kAny, "1.5"},
      {Variant(1.5f), kAny, "1.5!"},
      {Variant(Currency::FromRaw(12345600)), kAny, "1234.56@"},
      {DecimalOf("1.25"), kAny, "CDec(\"1.25\")"},
  });
}

}  // namespace
}  // namespace tsrt
