// Currency amounts, dates and decimals: their text, their conversions and their limits.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/outcome.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

using testing::Num;
using testing::Outcome;
using testing::U8;

constexpr int64_t kMaxRaw = std::numeric_limits<int64_t>::max();
constexpr int64_t kMinRaw = std::numeric_limits<int64_t>::min();

TEST(CurrencyText, ShowsUpToFourDecimalsWithoutTrailingZeros) {
  const std::tuple<const char*, int64_t, const char*> rows[] = {
      {"ru_RU", 12345600, "1234,56"},
      {"en_US", 12345600, "1234.56"},
      {"ru_RU", 10000, "1"},
      {"ru_RU", 0, "0"},
      {"ru_RU", 1, "0,0001"},
      {"ru_RU", -1, "-0,0001"},
      {"ru_RU", -15000, "-1,5"},
      {"ru_RU", 12340, "1,234"},
      {"ru_RU", kMaxRaw, "922337203685477,5807"},
      {"ru_RU", kMinRaw, "-922337203685477,5808"},
  };
  for (auto [locale, raw, text] : rows) {
    ScopedLocale l(locale);
    EXPECT_EQ(U8(ToString(Variant(Currency{raw}))), text) << "raw " << raw << " under " << locale;
  }
}

TEST(CurrencyText, ReadsBackExactlyWhatItWrites) {
  ScopedLocale l("ru_RU");
  for (int64_t raw : {kMaxRaw, kMinRaw, kMaxRaw - 1, int64_t{1234567890123456789}, int64_t{-5},
                      int64_t{99999999999999999}}) {
    const String text = ToString(Variant(Currency{raw}));
    EXPECT_EQ(Outcome([&] { return std::to_string(ToCurrency(Variant(text)).raw); }),
              std::to_string(raw))
        << "text " << U8(text);
  }
}

TEST(CurrencyConversion, RoundsHalfToEvenAtTheFourthDecimal) {
  ScopedLocale l("ru_RU");
  struct Row {
    const char* what;
    Variant value;
    const char* raw;  // or "error N"
  };
  const Row rows[] = {
      {"Double 1.5", Variant(1.5), "15000"},
      {"Double 0.00005 (a half)", Variant(0.00005), "0"},
      {"Double 0.00025 (a half)", Variant(0.00025), "2"},
      {"Double 0.12345 (a half)", Variant(0.12345), "1234"},
      {"Double 1.23455 (a half)", Variant(1.23455), "12346"},
      {"Double -1.23465 (a half)", Variant(-1.23465), "-12346"},
      {"Double 3.00005 (a half)", Variant(3.00005), "30000"},
      {"Double 0.000051", Variant(0.000051), "1"},
      {"Double -0.000049", Variant(-0.000049), "0"},
      {"Double 922337203685477", Variant(922337203685477.0), "9223372036854770000"},
      {"Double 9.3e14", Variant(9.3e14), "error 6"},
      {"Double -9.3e14", Variant(-9.3e14), "error 6"},
      {"Double NaN", Variant(std::nan("")), "error 6"},
      {"text 0,00015 (a half, exactly)", Variant(u"0,00015"), "2"},
      {"text 0,00025 (a half, exactly)", Variant(u"0,00025"), "2"},
      {"text -0,00035", Variant(u"-0,00035"), "-4"},
      {"text 1234,56", Variant(u"1234,56"), "12345600"},
      {"text 1234.56 under a Russian locale", Variant(u"1234.56"), "error 13"},
      {"text 1 234", Variant(u"1 234"), "error 13"},
      {"text 922337203685477,5808", Variant(u"922337203685477,5808"), "error 6"},
      {"text -922337203685477,5809", Variant(u"-922337203685477,5809"), "error 6"},
      {"text 1E3", Variant(u"1E3"), "10000000"},
      {"text &H10", Variant(u"&H10"), "160000"},
      {"text abc", Variant(u"abc"), "error 13"},
      {"Long -7", Variant(int32_t{-7}), "-70000"},
      {"Boolean True", Variant(true), "-10000"},
      {"Empty", Variant(), "0"},
      {"Null", Variant::Null(), "error 94"},
      {"Decimal 1.23455", Variant(Decimal::ParsePlain("1.23455").value()), "12346"},
      {"Decimal 1.23445", Variant(Decimal::ParsePlain("1.23445").value()), "12344"},
      {"Decimal 1.234450001", Variant(Decimal::ParsePlain("1.234450001").value()), "12345"},
      {"Decimal -922337203685477.5808",
       Variant(Decimal::ParsePlain("-922337203685477.5808").value()), "-9223372036854775808"},
      {"Decimal 922337203685477.5808",
       Variant(Decimal::ParsePlain("922337203685477.5808").value()), "error 6"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Outcome([&] { return std::to_string(ToCurrency(row.value).raw); }), row.raw)
        << "Currency from " << row.what;
  }
}

TEST(CurrencyConversion, WholeUnitsAreCheckedAgainstTheRange) {
  EXPECT_EQ(Currency::FromUnits(922337203685477).raw, 9223372036854770000);
  EXPECT_EQ(testing::RaisedNumber([] { Currency::FromUnits(922337203685478); }), 6);
  EXPECT_EQ(testing::RaisedNumber([] { Currency::FromUnits(-922337203685478); }), 6);
}

struct DateRow {
  const char* what;
  DateParts parts;
  double value;
};

TEST(DateCalendar, ConvertsCalendarPartsToDaysAndBack) {
  const DateRow rows[] = {
      {"the zero date", {1899, 12, 30, 0, 0, 0}, 0.0},
      {"1899-12-31", {1899, 12, 31, 0, 0, 0}, 1.0},
      {"1900-01-01", {1900, 1, 1, 0, 0, 0}, 2.0},
      {"1900-03-01 (1900 is no leap year)", {1900, 3, 1, 0, 0, 0}, 61.0},
      {"2000-02-29", {2000, 2, 29, 0, 0, 0}, 36585.0},
      {"2024-02-29", {2024, 2, 29, 0, 0, 0}, 45351.0},
      {"2024-03-05 14:07:09", {2024, 3, 5, 14, 7, 9}, 45356.58829861111},
      {"noon of the zero date", {1899, 12, 30, 12, 0, 0}, 0.5},
      {"1899-12-29 06:00", {1899, 12, 29, 6, 0, 0}, -1.25},
      {"1899-12-28 18:00", {1899, 12, 28, 18, 0, 0}, -2.75},
      {"the first day of year 100", {100, 1, 1, 0, 0, 0}, -657434.0},
      {"noon of the first day of year 100", {100, 1, 1, 12, 0, 0}, -657434.5},
      {"the last second of 9999", {9999, 12, 31, 23, 59, 59}, 2958465.999988426},
  };
  for (const DateRow& row : rows) {
    const Date d = Date::FromParts(row.parts);
    EXPECT_NEAR(d.value, row.value, 1e-9) << row.what;
    const DateParts back = Date{row.value}.ToParts();
    EXPECT_EQ(std::tie(back.year, back.month, back.day, back.hour, back.minute, back.second),
              std::tie(row.parts.year, row.parts.month, row.parts.day, row.parts.hour,
                       row.parts.minute, row.parts.second))
        << row.what;
  }
}

TEST(DateCalendar, RefusesPartsOutsideTheCalendar) {
  const std::pair<const char*, DateParts> rows[] = {
      {"year 99", {99, 12, 31, 0, 0, 0}},
      {"year 10000", {10000, 1, 1, 0, 0, 0}},
      {"month 0", {2024, 0, 1, 0, 0, 0}},
      {"month 13", {2024, 13, 1, 0, 0, 0}},
      {"day 0", {2024, 1, 0, 0, 0, 0}},
      {"February 29 of 1900", {1900, 2, 29, 0, 0, 0}},
      {"February 29 of 2023", {2023, 2, 29, 0, 0, 0}},
      {"February 30 of 2024", {2024, 2, 30, 0, 0, 0}},
      {"April 31", {2024, 4, 31, 0, 0, 0}},
      {"hour 24", {2024, 1, 1, 24, 0, 0}},
      {"minute 60", {2024, 1, 1, 0, 60, 0}},
      {"second -1", {2024, 1, 1, 0, 0, -1}},
  };
  for (const auto& [what, parts] : rows) {
    EXPECT_EQ(testing::RaisedNumber([&] { Date::FromParts(parts); }), 5) << what;
  }
}

TEST(DateCalendar, RoundsTheTimeToTheNearestSecond) {
  const std::pair<double, const char*> rows[] = {
      {0.99999, "1899-12-30 23:59:59"},
      {1.9999999999, "1900-01-01 00:00:00"},
      {-0.5, "1899-12-30 12:00:00"},
      {-1.9999999999, "1899-12-30 00:00:00"},
      {-2.9999999999, "1899-12-29 00:00:00"},
      {45356.0 + 0.4 / 86400, "2024-03-05 00:00:00"},
      {45356.0 + 0.6 / 86400, "2024-03-05 00:00:01"},
  };
  for (auto [value, text] : rows) EXPECT_EQ(U8(Date{value}.ToIsoText()), text) << value;
}

TEST(DateCalendar, DatesOutsideTheCalendarCannotBeWritten) {
  for (double value : {3e6, -7e5, 1e300, std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(testing::RaisedNumber([&] { Date{value}.ToIsoText(); }), 5) << value;
    EXPECT_EQ(Outcome([&] { return U8(ToString(Variant(Date{value}))); }), "error 5") << value;
  }
}

TEST(DateText, WritesIsoTextAndTheShortFormsOfMidnightAndTimeOnly) {
  const std::tuple<double, const char*, const char*> rows[] = {
      {45356.58829861111, "2024-03-05 14:07:09", "2024-03-05 14:07:09"},
      {45356.0, "2024-03-05 00:00:00", "2024-03-05"},
      {0.58829861111, "1899-12-30 14:07:09", "14:07:09"},
      {0.0, "1899-12-30 00:00:00", "1899-12-30"},
      {-1.25, "1899-12-29 06:00:00", "1899-12-29 06:00:00"},
      {-657434.0, "0100-01-01 00:00:00", "0100-01-01"},
  };
  for (auto [value, iso, text] : rows) {
    EXPECT_EQ(U8(Date{value}.ToIsoText()), iso) << value;
    EXPECT_EQ(U8(ToString(Variant(Date{value}))), text) << value;
  }
}

TEST(DateText, ParsesTheAcceptedFormsOnly) {
  const std::pair<const char16_t*, const char*> rows[] = {
      {u"2024-03-05 14:07:09", "2024-03-05 14:07:09"},
      {u"2024-03-05", "2024-03-05 00:00:00"},
      {u"  2024-03-05  ", "2024-03-05 00:00:00"},
      {u"2024-03-05T14:07:09", "2024-03-05 14:07:09"},
      {u"2024-03-05 14:07", "2024-03-05 14:07:00"},
      {u"2024-3-5 4:7:9", "2024-03-05 04:07:09"},
      {u"05.03.2024", "2024-03-05 00:00:00"},
      {u"05.03.2024 14:07:09", "2024-03-05 14:07:09"},
      {u"14:07:09", "1899-12-30 14:07:09"},
      {u"14:07", "1899-12-30 14:07:00"},
      {u"0100-01-01", "0100-01-01 00:00:00"},
      {u"9999-12-31 23:59:59", "9999-12-31 23:59:59"},
      {u"2024-02-29", "2024-02-29 00:00:00"},
      {u"", "none"},
      {u"abc", "none"},
      {u"2024-13-01", "none"},
      {u"2024-02-30", "none"},
      {u"2023-02-29", "none"},
      {u"2024-03-05 24:00:00", "none"},
      {u"2024-03-05 14:60", "none"},
      {u"2024-03-05 14:07:60", "none"},
      {u"2024-03-05 14", "none"},
      {u"2024-03-05 14:07:09 x", "none"},
      {u"2024-03-05  14:07", "none"},
      {u"2024/03/05", "none"},
      {u"0099-12-31", "none"},
      {u"24-03-05", "none"},
      {u"05.03.24", "none"},
      {u"14:07:09:01", "none"},
      {u"-2024-03-05", "none"},
      {u"2024-03-05 14:07:", "none"},
  };
  for (auto [text, iso] : rows) {
    const auto parsed = Date::Parse(text);
    EXPECT_EQ(parsed ? U8(parsed->ToIsoText()) : "none", iso) << "text \"" << U8(text) << "\"";
    EXPECT_EQ(Outcome([&] { return U8(ToDate(Variant(text)).ToIsoText()); }),
              parsed ? iso : "error 13")
        << "ToDate of \"" << U8(text) << "\"";
  }
}

TEST(DateConversion, AcceptsNumbersWithinTheCalendarRange) {
  const std::pair<Variant, const char*> rows[] = {
      {Variant(-657434.0), "0100-01-01 00:00:00"},
      {Variant(-657434.5), "0100-01-01 12:00:00"},
      {Variant(-657435.0), "error 6"},
      {Variant(2958465.5), "9999-12-31 12:00:00"},
      {Variant(2958466.0), "error 6"},
      {Variant(std::nan("")), "error 6"},
      {Variant(int32_t{2}), "1900-01-01 00:00:00"},
      {Variant(true), "1899-12-29 00:00:00"},
      {Variant(Currency{25000}), "1900-01-01 12:00:00"},
      {Variant(), "1899-12-30 00:00:00"},
      {Variant::Null(), "error 94"},
      {Variant::Nothing(), "error 13"},
  };
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(Outcome([&] { return U8(ToDate(value).ToIsoText()); }), text)
        << "Date from " << U8(TypeName(value.type()));
  }
}

TEST(DecimalText, WritesPlainDigitsWithTheLocalesSeparator) {
  const std::tuple<const char*, Variant, const char*> rows[] = {
      {"ru_RU", Variant(Decimal::ParsePlain("12.5").value()), "12,5"},
      {"en_US", Variant(Decimal::ParsePlain("-12.50").value()), "-12.5"},
      {"ru_RU", Variant(Decimal::ParsePlain("0.0001").value()), "0,0001"},
      {"ru_RU", Variant(Decimal::ParsePlain("-0.000").value()), "0"},
      {"ru_RU", Variant(Decimal::ParsePlain("79228162514264337593543950335").value()),
       "79228162514264337593543950335"},
      {"ru_RU", Variant(Decimal::FromDouble(0.1)), "0,1"},
      {"ru_RU", Variant(Decimal::FromDouble(1.0 / 3)), "0,333333333333333"},
      {"ru_RU", Variant(Decimal::FromDouble(-2.5e-5)), "-0,000025"},
      {"ru_RU", Variant(Decimal::FromDouble(1e20)), "100000000000000000000"},
      {"ru_RU", Variant(Decimal::FromInteger(kMinRaw)), "-9223372036854775808"},
  };
  for (const auto& [locale, value, text] : rows) {
    ScopedLocale l(locale);
    EXPECT_EQ(U8(ToString(value)), text) << text;
  }
}

TEST(DecimalConversion, ReadsTextExactlyAndChecksTheRange) {
  ScopedLocale l("ru_RU");
  const std::pair<Variant, const char*> rows[] = {
      {Variant(u"1,25"), "1.25"},
      {Variant(u" -1,250 "), "-1.25"},
      {Variant(u"79228162514264337593543950335"), "79228162514264337593543950335"},
      {Variant(u"79228162514264337593543950336"), "error 6"},
      {Variant(u"0,1234567890123456789012345678"), "0.1234567890123456789012345678"},
      {Variant(u"1,5E2"), "150"},
      {Variant(u"&HFF"), "255"},
      {Variant(u"1.25"), "error 13"},
      {Variant(u"1 25"), "error 13"},
      {Variant(u"12x"), "error 13"},
      {Variant(u""), "error 13"},
      {Variant(u"-"), "error 13"},
      {Variant(1e29), "error 6"},
      {Variant(std::nan("")), "error 6"},
      {Variant(Currency{12345000}), "1234.5"},
      {Variant(Currency{kMinRaw}), "-922337203685477.5808"},
      {Variant(int32_t{-3}), "-3"},
      {Variant(true), "-1"},
      {Variant(), "0"},
      {Variant::Null(), "error 94"},
  };
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(Outcome([&] { return ToDecimal(value).ToPlainText(); }), text)
        << "Decimal from " << U8(TypeName(value.type())) << " "
        << (value.isString() ? U8(value.asString()) : "");
  }
}

TEST(DecimalCompare, OrdersByValueWhateverTheScale) {
  auto d = [](const char* text) { return Decimal::ParsePlain(text).value(); };
  const std::tuple<const char*, const char*, int> rows[] = {
      {"1.50", "1.5", 0},      {"-0", "0", 0},          {"1", "2", -1},
      {"-1", "1", -1},         {"-1", "-2", 1},         {"10", "9.999", 1},
      {"0.001", "0.0009", 1},  {"-0.001", "-0.0009", -1},
      {"79228162514264337593543950335", "79228162514264337593543950334", 1},
  };
  for (auto [a, b, expected] : rows) {
    EXPECT_EQ(Decimal::Compare(d(a), d(b)), expected) << a << " against " << b;
    EXPECT_EQ(Decimal::Compare(d(b), d(a)), -expected) << b << " against " << a;
  }
  EXPECT_FALSE(Decimal::ParsePlain("1.2.3"));
  EXPECT_FALSE(Decimal::ParsePlain(""));
  EXPECT_NEAR(d("-12.345").ToDouble(), -12.345, 1e-12);
  EXPECT_EQ(Num(d("0.1").ToDouble()), "0.1");
}

}  // namespace
}  // namespace tsruntime
