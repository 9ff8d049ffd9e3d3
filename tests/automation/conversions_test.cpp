// Conversions between Variant types: number text in the user's locale, rounding to whole
// numbers, range checks, Booleans, Null and Empty, Currency, Decimal, Date, hexadecimal
// and octal text, and objects through their default member; and Val.
#include <gtest/gtest.h>

#include <cmath>

#include "support/described_object.h"
#include "support/outcome.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/err_object.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/automation/val.h"
#include "tsruntime/clsTSErrors.h"

namespace tsruntime {
namespace {

using testing::Num;
using testing::Described;
using testing::Outcome;
using testing::U8;


// `value` converted to the type named `to`: numbers in their shortest form, Currency as its
// raw count of ten-thousandths, Decimal as plain digits, Date as yyyy-mm-dd hh:nn:ss.
std::string Convert(const Variant& value, std::string_view to) {
  return Outcome([&]() -> std::string {
    if (to == "String") return U8(ToString(value));
    if (to == "Double") return Num(ToDouble(value));
    if (to == "Single") return Num(ToSingle(value));
    if (to == "Integer") return std::to_string(ToInteger(value));
    if (to == "Long") return std::to_string(ToLong(value));
    if (to == "Byte") return std::to_string(ToByte(value));
    if (to == "Boolean") return ToBoolean(value) ? "True" : "False";
    if (to == "Currency") return std::to_string(ToCurrency(value).raw);
    if (to == "Decimal") return ToDecimal(value).ToPlainText();
    if (to == "Date") return U8(ToDate(value).ToIsoText());
    return "no conversion";
  });
}

Variant Dec(const char* plain) { return Variant(Decimal::ParsePlain(plain).value()); }

// Each row: a locale, a value, and what the value converts to ("Type result; ...").
TEST(Conversions, FollowTheHostRuntimesRules) {
  const Variant array(SafeArray::FromStrings({u"a"}));
  const std::tuple<const char*, Variant, std::string_view> rows[] = {
      // Numbers to text: the locale's separator, 15 (Single: 7) significant digits,
      // E notation from 1E15 up and below 1E-4.
      {"ru_RU", Variant(1.5), "String 1,5; Currency 15000"}, {"en_US", Variant(-0.0), "String 0"},
      {"en_US", Variant(1.0 / 3), "String 0.333333333333333"},
      {"ru_RU", Variant(1.5e20), "String 1,5E+20; Currency error 6"},
      {"en_US", Variant(0.0001), "String 0.0001"}, {"ru_RU", Variant(-2.5e-7), "String -2,5E-07"},
      {"en_US", Variant(1.0f / 3), "String 0.3333333"}, {"en_US", Variant(1e39), "Single error 6"},
      {"ru_RU", Variant(true), "String True; Integer -1; Byte error 6; Currency -10000"},
      {"ru_RU", Variant(), "String ; Double 0; Boolean False; Date 1899-12-30 00:00:00"},
      {"ru_RU", Variant::Null(), "String error 94; Integer error 94; Boolean error 94"},
      {"ru_RU", array, "String error 13; Double error 13"},
      // Whole numbers: half to even, then the range of the type.
      {"ru_RU", Variant(2.5), "Integer 2; Long 2; Byte 2"}, {"ru_RU", Variant(3.5), "Integer 4"},
      {"ru_RU", Variant(-2.5), "Long -2; Byte error 6"}, {"ru_RU", Variant(-0.5), "Byte 0"},
      {"ru_RU", Variant(32767.5), "Integer error 6; Long 32768"},
      {"ru_RU", Variant(std::nan("")), "Long error 6; Currency error 6"},
      {"ru_RU", Variant(Currency{-35000}), "Integer -4; String -3,5"},
      {"ru_RU", Variant(Currency{25000}), "Integer 2"},
      // Text to numbers: only the locale's separator.
      {"ru_RU", Variant(u"  2,5  "), "Double 2.5; Integer 2; Boolean True; Currency 25000"},
      {"ru_RU", Variant(u"1.5"), "Double error 13; Currency error 13; Decimal error 13"},
      {"en_US", Variant(u"1,5"), "Double error 13"}, {"en_US", Variant(u"1e400"), "Double error 6"},
      // &H and &O text goes straight into the target: a whole-number type takes its own
      // width of bits, the top one the sign; other numbers take the unsigned value.
      {"en_US", Variant(u"&HF060"),
       "Integer -4000; Long 61536; Byte error 6; Double 61536; Currency 615360000"},
      {"en_US", Variant(u"&HFF"), "Byte 255; Integer 255; Single 255"},
      {"en_US", Variant(u"&HFFFFFFFF"), "Long -1; Double 4294967295; Currency 42949672950000"},
      {"en_US", Variant(u"&H100000000"), "Long error 6; Double 4294967296; Decimal 4294967296"},
      {"ru_RU", Variant(u" &hFFFFffffFFFFffff "),
       "Decimal 18446744073709551615; Currency error 6; Double 18446744073709551616"},
      {"en_US", Variant(u"&O177777"), "Integer -1; Long 65535; Boolean True"},
      {"en_US", Variant(u"&O78"), "Integer error 13"}, {"en_US", Variant(u"1 000"), "Double error 13"},
      {"ru_RU", Variant(u"true"), "Boolean True; Double error 13"},
      {"ru_RU", Variant(u"yes"), "Boolean error 13"}, {"ru_RU", Variant(u"FALSE"), "Boolean False"},
      // Currency: exact text, half to even at the fourth decimal.
      {"ru_RU", Variant(Currency{-1}), "String -0,0001"}, {"ru_RU", Variant(Currency{INT64_MIN}),
       "String -922337203685477,5808; Decimal -922337203685477.5808"},
      {"ru_RU", Variant(0.00025), "Currency 2"}, {"ru_RU", Variant(1.23455), "Currency 12346"},
      {"ru_RU", Variant(u"922337203685477,5808"), "Currency error 6"},
      {"ru_RU", Dec("1.234450001"), "Currency 12345"},
      // Decimal: exact, plain digits, 29 at most.
      {"ru_RU", Dec("-12.50"), "String -12,5"}, {"ru_RU", Variant(u" 1,250 "), "Decimal 1.25"},
      {"ru_RU", Variant(u"79228162514264337593543950336"), "Decimal error 6"},
      // Dates: yyyy-mm-dd at midnight, the time alone on the zero date; from 0100-01-01
      // (-657434, noon is -657434.5) to 9999-12-31.
      {"ru_RU", Variant(Date{45356.58829861111}), "String 2024-03-05 14:07:09"},
      {"ru_RU", Variant(Date{45356.0}), "String 2024-03-05"},
      {"ru_RU", Variant(Date{0.5}), "String 12:00:00"},
      {"ru_RU", Variant(Date{-1.25}), "String 1899-12-29 06:00:00; Double -1.25"},
      {"ru_RU", Variant(Date{3e6}), "String error 5"},
      {"ru_RU", Variant(-657434.5), "Date 0100-01-01 12:00:00"},
      {"ru_RU", Variant(-657435.0), "Date error 6"}, {"ru_RU", Variant(2958466.0), "Date error 6"},
      {"ru_RU", Variant(u"05.03.2024 14:07"), "Date 2024-03-05 14:07:00"},
      {"ru_RU", Variant(u"1900-02-29"), "Date error 13"},
      // An object is its default member; Nothing and an object without one cannot be.
      {"ru_RU", Described(u"12,5"), "String 12,5; Long 12; Currency 125000; Decimal 12.5"},
      {"ru_RU", Variant(New<ErrObject>(Error(53, u"src", u"File not found"))),
       "String File not found"},
      {"ru_RU", Variant::Nothing(), "String error 91; Long error 91; Date error 91"},
      {"ru_RU", Variant(New<clsZKString>()), "String error 438; Integer error 438"},
      {"ru_RU", Variant(New<clsTSErrors>()), "String error 449"},  // the default needs an index
  };
  for (const auto& [locale, value, expected] : rows) {
    ScopedLocale l(locale);
    std::string got;
    for (std::string_view rest = expected; !rest.empty();) {
      const std::string_view part = rest.substr(0, rest.find("; "));
      rest.remove_prefix(std::min(rest.size(), part.size() + 2));
      const std::string to(part.substr(0, part.find(' ')));
      got += (got.empty() ? "" : "; ") + to + " " + Convert(value, to);
    }
    EXPECT_EQ(got, expected) << U8(TypeName(value.type())) << " " << Convert(value, "String")
                             << " under " << locale;
    // What the library writes for Currency and Decimal reads back as the same amount.
    const VarType type = value.type();
    if (type == VarType::kCurrency || type == VarType::kDecimal) {
      EXPECT_TRUE(VariantEquals(ChangeType(Variant(ToString(value)), type), value)) << got;
    }
  }
}

// Val: the number a text begins with, as the host runtime reads it.
TEST(Val, ReadsTheLeadingNumberAndNothingElse) {
  ScopedLocale russian{"ru_RU"};  // the decimal point is "." whatever the locale says
  const std::pair<String, std::string> rows[] = {
      // a stray character ends the reading; blanks, tabs and line feeds are skipped, CR is not
      {u"abc", "0"}, {u"", "0"}, {u"12abc", "12"}, {u" 1 6\t1\n5 x", "1615"}, {u"1\r2", "1"},
      // a sign, a fraction, an exponent after E or D; "," is no decimal separator
      {u"-2.5e1x", "-25"}, {u"1D3", "1000"}, {u"7e", "7"}, {u"1,5", "1"}, {u"-", "0"},
      {u".5", "0.5"}, {u"1.2.3", "1.2"}, {u"1e400", "error 6"}, {u"1e-400", "0"},
      // up to four hex digits are 16 bits, up to eight 32; &O or a bare & is octal
      {u"&HFFFF", "-1"}, {u"&H1FFFF", "131071"}, {u"&HFFFFFFFF", "-1"}, {u"&H1FFFFFFFF", "error 6"},
      {u"&O17", "15"}, {u"&17", "15"}, {u"&X1", "0"},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(Outcome([&] { return Num(Val(text)); }), expected) << U8(text);
  }
}

}  // namespace
}  // namespace tsruntime
