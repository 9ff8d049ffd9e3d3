// Reading argument literals: every form, named arguments, and the faults reported for
// text that is not a literal.
#include "literal_parser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "literal_printer.h"
#include "tools/test_support.h"
#include "tsruntime/automation/locale.h"

namespace tsrt {
namespace {

using namespace tsrt_test;

struct ReadCase {
  const char* literal;
  Variant expected;
};

void ExpectReads(const std::vector<ReadCase>& cases) {
  for (const ReadCase& c : cases) {
    Variant got;
    ASSERT_NO_THROW(got = ParseLiteral(c.literal)) << c.literal;
    EXPECT_EQ(got.type(), c.expected.type()) << c.literal << " reads as the wrong type";
    EXPECT_TRUE(got == c.expected) << c.literal << " reads as " << PrintLiteral(got);
  }
}

TEST(LiteralParser, TextIsQuotedWithDoubledQuotesAndJoinsCharactersWithAmpersand) {
  ExpectReads({
      {R"("text")", Text(u"text")},
      {R"("")", Text(u"")},
      {R"("say ""hi""")", Text(u"say \"hi\"")},
      {R"("""")", Text(u"\"")},
      {"\"привет, мир\"", Text(u"привет, мир")},
      {"\"a\" & ChrW(10) & \"b\"", Text(u"a\nb")},
      {"\"a\"&ChrW(10)&\"b\"", Text(u"a\nb")},
      {"ChrW(7)", Text(u"\a")},
      {"ChrW(1044)", Text(u"Д")},
      {"ChrW(-1)", Text(u"\uFFFF")},
      {"ChrW(0) & \"x\"", Variant(String(u"\0x", 2))},
      {"chrw(65) & CHR(66)", Text(u"AB")},
      {"Chr(192)", Text(u"А")},  // the ANSI code page's byte 192 is Cyrillic A
      {"vbCrLf & vbTab & vbCr & vbLf & vbNewLine", Text(u"\r\n\t\r\n\r\n")},
      {"\"x\" & vbNullChar", Variant(String(u"x\0", 2))},
      {"vbNullString", Text(u"")},
      {"\"#5 & Array(1)\"", Text(u"#5 & Array(1)")},
  });
}

TEST(LiteralParser, WholeNumbersTakeTheNarrowestTypeThatHoldsThem) {
  ExpectReads({
      {"5", Variant(int16_t{5})},
      {"0", Variant(int16_t{0})},
      {"32767", Variant(int16_t{32767})},
      {"-32768", Variant(int16_t{-32768})},
      {"32768", Variant(int32_t{32768})},
      {"-32769", Variant(int32_t{-32769})},
      {"70000", Variant(int32_t{70000})},
      {"2147483647", Variant(int32_t{2147483647})},
      {"-2147483648", Variant(int32_t{INT32_MIN})},
      {"2147483648", Variant(2147483648.0)},
      {"99999999999999999999", Variant(1e20)},
      {"007", Variant(int16_t{7})},
  });
}

TEST(LiteralParser, SuffixesAndPointsChooseTheNumberType) {
  ExpectReads({
      {"5%", Variant(int16_t{5})},
      {"-32768%", Variant(int16_t{-32768})},
      {"5&", Variant(int32_t{5})},
      {"-5&", Variant(int32_t{-5})},
      {"1.5", Variant(1.5)},
      {"-1.5", Variant(-1.5)},
      {".5", Variant(0.5)},
      {"1E+20", Variant(1e20)},
      {"1e-3", Variant(0.001)},
      {"2E3", Variant(2000.0)},
      {"5#", Variant(5.0)},
      {"1.5#", Variant(1.5)},
      {"1.5!", Variant(1.5f)},
      {"0.1!", Variant(0.1f)},
      {"1E3!", Variant(1000.0f)},
      {"1234.56@", Variant(Currency::FromRaw(12345600))},
      {"5@", Variant(Currency::FromRaw(50000))},
      {"-0.0001@", Variant(Currency::FromRaw(-1))},
      {"922337203685477.5807@", Variant(Currency::FromRaw(INT64_MAX))},
      {"-922337203685477.5808@", Variant(Currency::FromRaw(INT64_MIN))},
  });
}

TEST(LiteralParser, CurrencyRoundsPastTheFourthDecimalHalfToEven) {
  ExpectReads({
      {"0.00005@", Variant(Currency::FromRaw(0))},
      {"0.00015@", Variant(Currency::FromRaw(2))},
      {"0.00025@", Variant(Currency::FromRaw(2))},
      {"0.000251@", Variant(Currency::FromRaw(3))},
      {"0.00004999@", Variant(Currency::FromRaw(0))},
      {"-0.00015@", Variant(Currency::FromRaw(-2))},
  });
}

TEST(LiteralParser, DatesKeywordsAndConversions) {
  ExpectReads({
      {"#2024-03-05 14:07:09#", DateOf(2024, 3, 5, 14, 7, 9)},
      {"#2024-03-05#", DateOf(2024, 3, 5)},
      {"#14:07:09#", DateOf(1899, 12, 30, 14, 7, 9)},
      {"#0100-01-01#", DateOf(100, 1, 1)},
      {"True", Variant(true)},
      {"false", Variant(false)},
      {"Null", Variant::Null()},
      {"EMPTY", Variant()},
      {"Nothing", Variant::Nothing()},
      {"Missing", Variant::Missing()},
      {"CVErr(2042)", Variant(ErrorValue{2042})},
      {"CByte(255)", Variant(uint8_t{255})},
      {"CInt(2.5)", Variant(int16_t{2})},
      {"CInt(3.5)", Variant(int16_t{4})},
      {"CLng(\"1.5\")", Variant(int32_t{2})},
      {"CSng(1.5)", Variant(1.5f)},
      {"CDbl(5)", Variant(5.0)},
      {"CCur(1.5)", Variant(Currency::FromRaw(15000))},
      {"CCur(\"0.1234\")", Variant(Currency::FromRaw(1234))},
      {"CBool(0)", Variant(false)},
      {"CBool(\"True\")", Variant(true)},
      {"CDate(45000)", Variant(Date{45000.0})},
      {"CDate(\"2024-03-05\")", DateOf(2024, 3, 5)},
      {"CDec(\"1.5\")", DecimalOf("1.5")},
      {"CDec(\"-79228162514264337593543950335\")", DecimalOf("-79228162514264337593543950335")},
      {"CDec(\"0.0000000000000000000000000001\")", DecimalOf("0.0000000000000000000000000001")},
      {"CDec(2)", DecimalOf("2")},
      {"CDbl(\"Infinity\")", Variant(std::numeric_limits<double>::infinity())},
      {"CSng(\"-Infinity\")", Variant(-std::numeric_limits<float>::infinity())},
      {"CDbl(\"NaN\")", Variant(std::nan(""))},
  });
}

TEST(LiteralParser, ArraysKeepTheirBoundsElementTypeAndNesting) {
  ExpectReads({
      {"Array()", MakeArray(VarType::kVariant, {{0, -1}}, {})},
      {"Array(Undimensioned)", Variant(SafeArray(VarType::kVariant))},
      {"Array( undimensioned ) As String", Variant(SafeArray(VarType::kString))},
      {"Array(1, \"a\")",
       MakeArray(VarType::kVariant, {{0, 1}}, {Variant(int16_t{1}), Text(u"a")})},
      {"Array( 1 ,2 )",
       MakeArray(VarType::kVariant, {{0, 1}}, {Variant(int16_t{1}), Variant(int16_t{2})})},
      {"Array(-1 To -1: \"\")", MakeArray(VarType::kVariant, {{-1, -1}}, {Text(u"")})},
      {"Array(5 To 4:)", MakeArray(VarType::kVariant, {{5, 4}}, {})},
      {"Array(0 To -1:) As String", MakeArray(VarType::kString, {{0, -1}}, {})},
      {"Array(1 To 2: 5, 6) As Long",
       MakeArray(VarType::kLong, {{1, 2}}, {Variant(int32_t{5}), Variant(int32_t{6})})},
      {"Array(0 To 1, 0 To 1: \"a\", \"b\", \"c\", \"d\") As String",
       MakeArray(VarType::kString, {{0, 1}, {0, 1}},
                 {Text(u"a"), Text(u"b"), Text(u"c"), Text(u"d")})},
      {"Array(Array(1) As Long, Array())",
       MakeArray(VarType::kVariant, {{0, 1}},
                 {MakeArray(VarType::kLong, {{0, 0}}, {Variant(int32_t{1})}),
                  MakeArray(VarType::kVariant, {{0, -1}}, {})})},
      {"Array(Nothing, Null) As Variant",
       MakeArray(VarType::kVariant, {{0, 1}}, {Variant::Nothing(), Variant::Null()})},
  });
}

TEST(LiteralParser, TablesListTheFirstIndexFastest) {
  const Variant v = ParseLiteral("Array(0 To 1, 0 To 2: 1, 2, 3, 4, 5, 6)");
  const SafeArray& a = v.asArray();
  ASSERT_EQ(a.dimensions(), 2);
  EXPECT_TRUE(a.get(1, 0) == Variant(int16_t{2}));
  EXPECT_TRUE(a.get(0, 1) == Variant(int16_t{3}));
  EXPECT_TRUE(a.get(1, 2) == Variant(int16_t{6}));
}

TEST(LiteralParser, ByteArraysHoldTheirBytes) {
  const Variant v = ParseLiteral("Array(0, 128, 255) As Byte");
  ASSERT_EQ(v.type(), tsruntime::ArrayOf(VarType::kByte));
  EXPECT_EQ(v.asArray().bytes(), (std::vector<uint8_t>{0, 128, 255}));
}

TEST(LiteralParser, ArgumentsAreNamedPositionalOrLeftOut) {
  struct Case {
    const char* word;
    const char16_t* name;
    Variant value;
  };
  const Case cases[] = {
      {"Step:=2", u"Step", Variant(int16_t{2})},
      {"Step := 2", u"Step", Variant(int16_t{2})},
      {"CompareType:=Missing", u"CompareType", Variant::Missing()},
      {"Items:=Array(1 To 1: 0)", u"Items",
       MakeArray(VarType::kVariant, {{1, 1}}, {Variant(int16_t{0})})},
      {"\"Step:=2\"", u"", Text(u"Step:=2")},
      {"2", u"", Variant(int16_t{2})},
      {"", u"", Variant::Missing()},
      {"   ", u"", Variant::Missing()},
  };
  for (const Case& c : cases) {
    tsruntime::Argument a;
    ASSERT_NO_THROW(a = ParseArgument(c.word)) << c.word;
    EXPECT_EQ(a.name, String(c.name)) << c.word;
    EXPECT_TRUE(a.value == c.value) << c.word << " holds " << PrintLiteral(a.value);
  }
}

TEST(LiteralParser, LocaleDoesNotChangeHowNumbersRead) {
  tsruntime::ScopedLocale russian("ru_RU");
  ExpectReads({
      {"1.5", Variant(1.5)},
      {"CLng(\"2.5\")", Variant(int32_t{2})},
      {"CDec(\"1.25\")", DecimalOf("1.25")},
      {"1234.56@", Variant(Currency::FromRaw(12345600))},
  });
}

struct FaultCase {
  std::string literal;
  const char* message;  // the whole LiteralError text
};

TEST(LiteralParser, MalformedLiteralsAreReportedWithTheirColumn) {
  const FaultCase cases[] = {
      {"", "expected a literal at column 1"},
      {"abc", "unknown word 'abc' (text goes in double quotes) at column 1"},
      {"\"open", "text has no closing '\"' at column 1"},
      {"\"a\" & 5",
       "only quoted text, ChrW(n), Chr(n) and vb text constants join with '&' at column 7"},
      {"5 6", "unexpected text after the literal at column 3"},
      {"True False", "unexpected text after the literal at column 6"},
      {"5x", "unexpected character after the number at column 2"},
      {"1.5E", "unexpected character after the number at column 4"},
      {"-", "expected a number at column 1"},
      {"1.", "expected digits after '.' at column 3"},
      {"1.5%", "an Integer literal takes no decimal point or exponent at column 1"},
      {"40000%", "out of range for Integer at column 1"},
      {"3000000000&", "out of range for Long at column 1"},
      {"1E400", "out of range for Double at column 1"},
      {"1E39!", "out of range for Single at column 1"},
      {"1E5@", "a Currency literal takes no exponent at column 1"},
      {"922337203685477.5808@", "out of range for Currency at column 1"},
      {"#2024-02-30#", "not a date (write #yyyy-mm-dd hh:nn:ss# or #yyyy-mm-dd#) at column 1"},
      {"#2024-03-05", "date has no closing '#' at column 1"},
      {"ChrW(65536)", "ChrW must be from -32768 to 65535 at column 6"},
      {"Chr(\"a\")", "Chr takes a whole number at column 5"},
      {"ChrW 65", "expected '(' after ChrW at column 6"},
      {"CVErr(1.5)", "CVErr takes a whole number at column 7"},
      {"CInt(40000)", "CInt cannot take this value: Overflow at column 6"},
      {"CInt(\"x\")", "CInt takes a number written with '.' at column 6"},
      {"CDec(\"1,5\")", "CDec takes plain digits with '.' as the decimal point at column 6"},
      {"CDate(\"soon\")", "CDate takes a date written yyyy-mm-dd hh:nn:ss at column 7"},
      {"CDate(1E10)", "CDate cannot take this value: Overflow at column 7"},
      {"<Object clsZKString>", "objects cannot be written as literals at column 1"},
      {"Array", "expected '(' after Array at column 6"},
      {"Array(1, 2", "expected ',' or ')' at column 11"},
      {"Array(1,, 2)", "unexpected character ',' at column 9"},
      {"Array(0 To 2: 1, 2)", "the bounds hold 3 elements, the list has 2 at column 1"},
      {"Array(3 To 1:)", "an upper bound may not be below the lower bound - 1 at column 12"},
      {"Array(1 To 2 3)", "expected ',' or ':' after the bounds at column 14"},
      {"Array(0 To 1, 5)", "expected To at column 16"},
      {"Array(\"a\" To 1:)", "a lower bound takes a whole number at column 7"},
      {"Array(1) As Money", "expected an element type after As at column 13"},
      {"Array(\"x\") As Long", "element 1 cannot be Long: Type mismatch at column 1"},
      {"Array(1, 256) As Byte", "element 2 cannot be Byte: Overflow at column 1"},
      {"Array(0 To 2000000000, 0 To 2000000000, 0 To -1:)",
       "the bounds describe too large an array at column 1"},
      {std::string(100, '('), "unexpected character '(' at column 1"},
      {[] {
         std::string s;
         for (int i = 0; i < 100; ++i) s += "Array(";
         return s + "1" + std::string(100, ')');
       }(),
       "literal nested too deeply at column 385"},
  };
  for (const FaultCase& c : cases) {
    try {
      const Variant v = ParseLiteral(c.literal);
      ADD_FAILURE() << c.literal << " was read as " << PrintLiteral(v);
    } catch (const LiteralError& e) {
      EXPECT_STREQ(e.what(), c.message) << "for " << c.literal;
    }
  }
}

TEST(LiteralParser, NamedArgumentsReportColumnsInTheWholeWord) {
  try {
    ParseArgument("Step:=abc");
    ADD_FAILURE() << "Step:=abc was read";
  } catch (const LiteralError& e) {
    EXPECT_STREQ(e.what(), "unknown word 'abc' (text goes in double quotes) at column 7");
  }
  EXPECT_THROW(ParseArgument("Step:="), LiteralError);
  EXPECT_THROW(ParseArgument("Step:=1 2"), LiteralError);
}

// Every prefix and every one-character deletion of valid literals: each is read or
// refused with a LiteralError, nothing else.
TEST(LiteralParser, DamagedLiteralsNeverEscapeAsAnythingButLiteralError) {
  const std::string samples[] = {
      "\"a\"\"b\" & ChrW(10) & vbCrLf & Chr(200)",
      "Array(-1 To 0, 1 To 2: 1, 2.5!, \"x\", #2024-03-05 14:07:09#) As Variant",
      "Array(Array(CDec(\"1.5\"), CByte(5)) As Variant, 1234.5678@, -70000&) As Variant",
      "Name:=CDate(CDbl(\"NaN\"))",
      "Array(Undimensioned) As Byte",
  };
  for (const std::string& sample : samples) {
    std::vector<std::string> damaged;
    for (size_t n = 0; n <= sample.size(); ++n) damaged.push_back(sample.substr(0, n));
    for (size_t k = 0; k < sample.size(); ++k) {
      damaged.push_back(sample.substr(0, k) + sample.substr(k + 1));
    }
    for (const std::string& text : damaged) {
      try {
        ParseArgument(text);
      } catch (const LiteralError&) {
      } catch (const std::exception& e) {
        ADD_FAILURE() << text << " escaped with " << e.what();
      }
    }
  }
}

}  // namespace
}  // namespace tsrt
