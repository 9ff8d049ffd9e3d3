// Conversions between Variant types: number text in the user's locale, rounding to whole
// numbers, range checks, Booleans, Null and Empty.
#include <gtest/gtest.h>

#include <cmath>
#include <latch>
#include <limits>
#include <thread>

#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/automation/safearray.h"

namespace tsruntime {
namespace {

using testing::Num;
using testing::Outcome;
using testing::U8;

struct TextRow {
  const char* locale;
  Variant value;
  const char* text;  // or "error N"
};

TEST(ToStringConversion, WritesNumbersInTheLocalesForm) {
  const TextRow rows[] = {
      {"ru_RU", Variant(1.5), "1,5"},
      {"en_US", Variant(1.5), "1.5"},
      {"ru_RU", Variant(-1234.5), "-1234,5"},
      {"ru_RU", Variant(-0.0), "0"},
      {"en_US", Variant(0.1 + 0.2), "0.3"},
      {"en_US", Variant(1.0 / 3), "0.333333333333333"},
      {"en_US", Variant(2.0 / 3), "0.666666666666667"},
      {"en_US", Variant(123456789012345.0), "123456789012345"},
      {"en_US", Variant(1e15), "1E+15"},
      {"en_US", Variant(1e20), "1E+20"},
      {"ru_RU", Variant(1.5e20), "1,5E+20"},
      {"en_US", Variant(0.0001), "0.0001"},
      {"en_US", Variant(1e-5), "1E-05"},
      {"ru_RU", Variant(-2.5e-7), "-2,5E-07"},
      {"en_US", Variant(1e100), "1E+100"},
      {"en_US", Variant(1.1f), "1.1"},
      {"ru_RU", Variant(0.1f), "0,1"},
      {"en_US", Variant(1.0f / 3), "0.3333333"},
      {"en_US", Variant(16777216.0f), "1.677722E+07"},
      {"en_US", Variant(-0.0f), "0"},
      {"en_US", Variant(int16_t{-32768}), "-32768"},
      {"en_US", Variant(int32_t{-2147483647 - 1}), "-2147483648"},
      {"en_US", Variant(uint8_t{255}), "255"},
      {"ru_RU", Variant(true), "True"},
      {"ru_RU", Variant(false), "False"},
      {"ru_RU", Variant(), ""},
      {"ru_RU", Variant::Null(), "error 94"},
      {"ru_RU", Variant::Missing(), "error 13"},
      {"ru_RU", Variant::Nothing(), "error 13"},
      {"ru_RU", Variant(SafeArray::FromStrings({u"a"})), "error 13"},
  };
  for (const TextRow& row : rows) {
    ScopedLocale l(row.locale);
    EXPECT_EQ(Outcome([&] { return U8(ToString(row.value)); }), row.text)
        << "value of type " << U8(TypeName(row.value.type())) << " under " << row.locale
        << ", expected " << row.text;
  }
}

struct ParseRow {
  const char* locale;
  const char16_t* text;
  const char* number;  // shortest form of the double, or "error N"
};

TEST(ToDoubleConversion, ReadsTextWithTheLocalesDecimalSeparatorOnly) {
  const ParseRow rows[] = {
      {"ru_RU", u"1,5", "1.5"},
      {"ru_RU", u"1.5", "error 13"},
      {"en_US", u"1.5", "1.5"},
      {"en_US", u"1,5", "error 13"},
      {"ru_RU", u"  2,5  ", "2.5"},
      {"ru_RU", u"-3", "-3"},
      {"ru_RU", u"+4", "4"},
      {"ru_RU", u",5", "0.5"},
      {"ru_RU", u"5,", "5"},
      {"ru_RU", u"1E3", "1000"},
      {"ru_RU", u"1,5e-2", "0.015"},
      {"en_US", u"2.5D+1", "25"},
      {"en_US", u"1e400", "error 6"},
      {"ru_RU", u"1,5e400", "error 6"},
      {"en_US", u"1e-400", "0"},
      {"en_US", u"&HFF", "255"},
      {"en_US", u"&hff", "255"},
      {"en_US", u"&HFFFF", "-1"},
      {"en_US", u"&H8000", "-32768"},
      {"en_US", u"&H10000", "65536"},
      {"en_US", u"&HFFFFFFFF", "-1"},
      {"en_US", u"&H100000000", "error 6"},
      {"en_US", u"&H10000000000000000", "error 6"},
      {"en_US", u"&H1000000000000000000000", "error 6"},
      {"en_US", u"&H00000000000000000000FF", "255"},
      {"en_US", u"&O37777777777", "-1"},
      {"en_US", u"&O40000000000", "error 6"},
      {"en_US", u"&O17", "15"},
      {"en_US", u"&O8", "error 13"},
      {"en_US", u"&HG", "error 13"},
      {"en_US", u"&H", "error 13"},
      {"en_US", u"", "error 13"},
      {"en_US", u"   ", "error 13"},
      {"en_US", u"abc", "error 13"},
      {"en_US", u"1e", "error 13"},
      {"en_US", u"1e+", "error 13"},
      {"en_US", u"1.5.5", "error 13"},
      {"en_US", u".", "error 13"},
      {"en_US", u"--1", "error 13"},
      {"en_US", u"1 000", "error 13"},
      {"en_US", u"12abc", "error 13"},
      {"en_US", u"True", "error 13"},
  };
  for (const ParseRow& row : rows) {
    ScopedLocale l(row.locale);
    EXPECT_EQ(Outcome([&] { return Num(ToDouble(Variant(row.text))); }), row.number)
        << "text \"" << U8(row.text) << "\" under " << row.locale;
  }
}

TEST(ToDoubleConversion, TakesEveryNumericTypeAndRefusesTheRest) {
  struct Row {
    const char* what;
    Variant value;
    const char* number;
  };
  const Row rows[] = {
      {"Empty", Variant(), "0"},
      {"Null", Variant::Null(), "error 94"},
      {"Boolean True", Variant(true), "-1"},
      {"Integer", Variant(int16_t{-7}), "-7"},
      {"Byte", Variant(uint8_t{200}), "200"},
      {"Single 0.5", Variant(0.5f), "0.5"},
      {"Currency 1.2345", Variant(Currency{12345}), "1.2345"},
      {"Date 1899-12-29 06:00", Variant(Date{-1.25}), "-1.25"},
      {"Decimal", Variant(Decimal::FromInteger(-42)), "-42"},
      {"Missing", Variant::Missing(), "error 13"},
      {"Nothing", Variant::Nothing(), "error 13"},
      {"an array", Variant(SafeArray::FromStrings({u"1"})), "error 13"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Outcome([&] { return Num(ToDouble(row.value)); }), row.number) << row.what;
  }
}

struct RoundRow {
  const char* what;
  Variant value;
  const char* integer;  // ToInteger
  const char* along;    // ToLong
  const char* byte;     // ToByte
};

TEST(WholeNumberConversion, RoundsHalfToEvenAndChecksTheRange) {
  ScopedLocale l("ru_RU");
  const RoundRow rows[] = {
      {"2.5", Variant(2.5), "2", "2", "2"},
      {"3.5", Variant(3.5), "4", "4", "4"},
      {"1.5", Variant(1.5), "2", "2", "2"},
      {"0.5", Variant(0.5), "0", "0", "0"},
      {"-0.5", Variant(-0.5), "0", "0", "0"},
      {"-1.5", Variant(-1.5), "-2", "-2", "error 6"},
      {"-2.5", Variant(-2.5), "-2", "-2", "error 6"},
      {"2.4999", Variant(2.4999), "2", "2", "2"},
      {"2.5000001", Variant(2.5000001), "3", "3", "3"},
      {"Single 2.5", Variant(2.5f), "2", "2", "2"},
      {"text 2,5", Variant(u"2,5"), "2", "2", "2"},
      {"text 3,5", Variant(u"3,5"), "4", "4", "4"},
      {"text 2.5 under a Russian locale", Variant(u"2.5"), "error 13", "error 13", "error 13"},
      {"text 40000", Variant(u"40000"), "error 6", "40000", "error 6"},
      {"text x", Variant(u"x"), "error 13", "error 13", "error 13"},
      {"Long 40000", Variant(int32_t{40000}), "error 6", "40000", "error 6"},
      {"32767", Variant(32767.0), "32767", "32767", "error 6"},
      {"32767.5 rounds up to 32768", Variant(32767.5), "error 6", "32768", "error 6"},
      {"32766.5 rounds down", Variant(32766.5), "32766", "32766", "error 6"},
      {"-32768.5 rounds to -32768", Variant(-32768.5), "-32768", "-32768", "error 6"},
      {"-32769", Variant(-32769.0), "error 6", "-32769", "error 6"},
      {"2147483647", Variant(2147483647.0), "error 6", "2147483647", "error 6"},
      {"2147483647.5", Variant(2147483647.5), "error 6", "error 6", "error 6"},
      {"-2147483648.5", Variant(-2147483648.5), "error 6", "-2147483648", "error 6"},
      {"-2147483649", Variant(-2147483649.0), "error 6", "error 6", "error 6"},
      {"1e300", Variant(1e300), "error 6", "error 6", "error 6"},
      {"infinity", Variant(std::numeric_limits<double>::infinity()), "error 6", "error 6",
       "error 6"},
      {"NaN", Variant(std::nan("")), "error 6", "error 6", "error 6"},
      {"255.5 rounds to 256", Variant(255.5), "256", "256", "error 6"},
      {"254.5 rounds to 254", Variant(254.5), "254", "254", "254"},
      {"Byte 256 from an Integer", Variant(int16_t{256}), "256", "256", "error 6"},
      {"Currency 2.5", Variant(Currency{25000}), "2", "2", "2"},
      {"Currency 3.5", Variant(Currency{35000}), "4", "4", "4"},
      {"Currency -2.5", Variant(Currency{-25000}), "-2", "-2", "error 6"},
      {"Currency -3.5", Variant(Currency{-35000}), "-4", "-4", "error 6"},
      {"Currency 2.5001", Variant(Currency{25001}), "3", "3", "3"},
      {"Currency -2.4999", Variant(Currency{-24999}), "-2", "-2", "error 6"},
      {"Boolean True", Variant(true), "-1", "-1", "error 6"},
      {"Boolean False", Variant(false), "0", "0", "0"},
      {"Empty", Variant(), "0", "0", "0"},
      {"Null", Variant::Null(), "error 94", "error 94", "error 94"},
      {"Date 2.75", Variant(Date{2.75}), "3", "3", "3"},
      {"Decimal 7.5", Variant(Decimal::ParsePlain("7.5").value()), "8", "8", "8"},
      {"Nothing", Variant::Nothing(), "error 13", "error 13", "error 13"},
      {"Missing", Variant::Missing(), "error 13", "error 13", "error 13"},
  };
  for (const RoundRow& row : rows) {
    EXPECT_EQ(Outcome([&] { return std::to_string(ToInteger(row.value)); }), row.integer)
        << "Integer from " << row.what;
    EXPECT_EQ(Outcome([&] { return std::to_string(ToLong(row.value)); }), row.along)
        << "Long from " << row.what;
    EXPECT_EQ(Outcome([&] { return std::to_string(ToByte(row.value)); }), row.byte)
        << "Byte from " << row.what;
  }
}

TEST(WholeNumberConversion, RoundHalfEvenKeepsWholeNumbersAndLargeValues) {
  const std::pair<double, double> rows[] = {
      {0.0, 0.0},   {4.0, 4.0},   {4.5, 4.0},   {5.5, 6.0},     {-4.5, -4.0},
      {-5.5, -6.0}, {1e16, 1e16}, {4.4, 4.0},   {4.6, 5.0},     {-0.4, -0.0},
  };
  for (auto [in, out] : rows) EXPECT_EQ(RoundHalfEven(in), out) << "rounding " << in;
}

TEST(SingleConversion, OverflowsBeyondTheSingleRange) {
  EXPECT_EQ(Outcome([] { return Num(ToSingle(Variant(1e39))); }), "error 6");
  EXPECT_EQ(Outcome([] { return Num(ToSingle(Variant(-1e39))); }), "error 6");
  EXPECT_EQ(Outcome([] { return Num(ToSingle(Variant(3e38))); }), Num(3e38f));
  EXPECT_EQ(Outcome([] { return Num(ToSingle(Variant(1e-50))); }), "0");
}

TEST(BooleanConversion, ReadsWordsNumbersAndNumericText) {
  ScopedLocale l("ru_RU");
  struct Row {
    const char* what;
    Variant value;
    const char* result;
  };
  const Row rows[] = {
      {"text true", Variant(u"true"), "True"},
      {"text FALSE", Variant(u"FALSE"), "False"},
      {"text True", Variant(u"True"), "True"},
      {"text 0", Variant(u"0"), "False"},
      {"text -1", Variant(u"-1"), "True"},
      {"text 2,5", Variant(u"2,5"), "True"},
      {"text 0,0", Variant(u"0,0"), "False"},
      {"text yes", Variant(u"yes"), "error 13"},
      {"empty text", Variant(u""), "error 13"},
      {"text \" true\"", Variant(u" true"), "error 13"},
      {"Double 0", Variant(0.0), "False"},
      {"Double 0.1", Variant(0.1), "True"},
      {"Integer 2", Variant(int16_t{2}), "True"},
      {"Currency 0.0001", Variant(Currency{1}), "True"},
      {"Decimal 0", Variant(Decimal{}), "False"},
      {"Empty", Variant(), "False"},
      {"Null", Variant::Null(), "error 94"},
      {"Nothing", Variant::Nothing(), "error 13"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Outcome([&] { return U8(ToString(Variant(ToBoolean(row.value)))); }), row.result)
        << "Boolean from " << row.what;
  }
}

TEST(BooleanConversion, TrueIsMinusOneAsANumberAndTrueAsText) {
  EXPECT_EQ(ToLong(Variant(true)), -1);
  EXPECT_EQ(ToInteger(Variant(true)), -1);
  EXPECT_EQ(ToDouble(Variant(true)), -1.0);
  EXPECT_EQ(ToCurrency(Variant(true)).raw, -10000);
  EXPECT_EQ(U8(ToString(Variant(true))), "True");
  EXPECT_EQ(U8(ToString(Variant(false))), "False");
}

TEST(ChangeTypeConversion, GivesTheRequestedTypeOrTheConversionError) {
  ScopedLocale l("ru_RU");
  struct Row {
    const char* what;
    Variant value;
    VarType type;
    const char* text;  // ToString of the result
  };
  const Row rows[] = {
      {"text 5 to Long", Variant(u"5"), VarType::kLong, "5"},
      {"text 5,5 to Double", Variant(u"5,5"), VarType::kDouble, "5,5"},
      {"text 5,5 to Single", Variant(u"5,5"), VarType::kSingle, "5,5"},
      {"Double 2.5 to Integer", Variant(2.5), VarType::kInteger, "2"},
      {"Long 300 to Byte", Variant(int32_t{300}), VarType::kByte, "error 6"},
      {"Double to String", Variant(0.25), VarType::kString, "0,25"},
      {"Long 1 to Boolean", Variant(int32_t{1}), VarType::kBoolean, "True"},
      {"Double 1.5 to Currency", Variant(1.5), VarType::kCurrency, "1,5"},
      {"Long 2 to Date", Variant(int32_t{2}), VarType::kDate, "1900-01-01"},
      {"text to Decimal", Variant(u"1,25"), VarType::kDecimal, "1,25"},
      {"Empty to String", Variant(), VarType::kString, ""},
      {"Empty to Long", Variant(), VarType::kLong, "0"},
      {"Null to Long", Variant::Null(), VarType::kLong, "error 94"},
      {"Long to Object", Variant(int32_t{1}), VarType::kObject, "error 13"},
      {"text to a String array", Variant(u"a"), ArrayOf(VarType::kString), "error 13"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Outcome([&] {
                const Variant r = ChangeType(row.value, row.type);
                EXPECT_EQ(r.type(), row.type) << row.what;
                return U8(ToString(r));
              }),
              row.text)
        << row.what;
  }
  // Nothing but Variant keeps Null; Empty becomes Nothing for an object.
  EXPECT_TRUE(ChangeType(Variant::Null(), VarType::kVariant).isNull());
  EXPECT_TRUE(ChangeType(Variant(), VarType::kObject).isObject());
}

TEST(TypeNames, AreTheHostRuntimesNames) {
  const std::pair<VarType, const char*> rows[] = {
      {VarType::kEmpty, "Empty"},       {VarType::kNull, "Null"},
      {VarType::kInteger, "Integer"},   {VarType::kLong, "Long"},
      {VarType::kCurrency, "Currency"}, {VarType::kDate, "Date"},
      {VarType::kBoolean, "Boolean"},   {VarType::kDecimal, "Decimal"},
      {VarType::kByte, "Byte"},         {ArrayOf(VarType::kString), "String()"},
      {ArrayOf(VarType::kByte), "Byte()"},  {ArrayOf(VarType::kVariant), "Variant()"},
  };
  for (auto [type, name] : rows) EXPECT_EQ(U8(TypeName(type)), name) << name;
}

TEST(LocaleSeparators, FollowTheThreadsLocaleAndComeBack) {
  SetThreadLocale("en_US");
  {
    ScopedLocale ru("ru_RU.UTF-8");
    EXPECT_EQ(DecimalSeparator(), u',');
    {
      ScopedLocale c("C");
      EXPECT_EQ(DecimalSeparator(), u'.');
    }
    EXPECT_EQ(DecimalSeparator(), u',');
  }
  EXPECT_EQ(DecimalSeparator(), u'.');
  SetThreadLocale("");
}

TEST(LocaleSeparators, AreKeptPerThread) {
  ScopedLocale ru("ru_RU");
  std::latch both_set(2);
  std::string other_text;
  std::thread other([&] {
    ScopedLocale en("en_US");
    both_set.arrive_and_wait();
    other_text = U8(ToString(Variant(1.5)));
  });
  both_set.arrive_and_wait();
  const std::string own_text = U8(ToString(Variant(1.5)));
  other.join();
  EXPECT_EQ(own_text, "1,5");
  EXPECT_EQ(other_text, "1.5");
}

TEST(CaseMapping, KeepsTheLengthOfTheText) {
  ScopedLocale l("ru_RU");
  EXPECT_EQ(U8(ToUpper(u"ёлка Straße")), "ЁЛКА STRAßE");
  EXPECT_EQ(U8(ToLower(u"ЁЛКА ÀB")), "ёлка àb");
  const String lone_surrogate = u"a\xD800z";
  EXPECT_EQ(ToUpper(lone_surrogate), String(u"A\xD800Z"));
  ScopedLocale tr("tr_TR");
  EXPECT_EQ(U8(ToUpper(u"i")), "İ");
  EXPECT_EQ(U8(ToLower(u"I")), "ı");
}

}  // namespace
}  // namespace tsruntime
