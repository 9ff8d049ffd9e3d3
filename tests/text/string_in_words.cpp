// clsZKString::InWords: amounts in Russian words.
#include <limits>

#include "string_test_support.h"

namespace tsruntime {
namespace {

using string_test::NewString;

// An amount written as in the host language ("-1234.5678"), to four decimals exactly.
Currency Amount(std::string_view text) {
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  uint64_t raw = 0;
  int decimals = -1;
  for (char c : text) {
    if (c == '.') {
      decimals = 0;
      continue;
    }
    raw = raw * 10 + static_cast<uint64_t>(c - '0');
    if (decimals >= 0) ++decimals;
  }
  for (int d = decimals < 0 ? 0 : decimals; d < 4; ++d) raw *= 10;
  return Currency::FromRaw(static_cast<int64_t>(negative ? 0 - raw : raw));
}

struct Case {
  const char* amount;
  bool unit_names;
  const char* expected;
};

template <size_t N>
void ExpectWords(const Case (&cases)[N]) {
  auto s = NewString();
  for (const Case& c : cases) {
    EXPECT_EQ(ToUtf8(s->InWords(Amount(c.amount), c.unit_names)), c.expected)
        << c.amount << (c.unit_names ? "" : " without unit names");
  }
}

TEST(InWords, WritesTheDocumentedExamples) {
  const Case cases[] = {
      {"1234.56", true, "одна тысяча двести тридцать четыре рубля 56 копеек"},
      {"1234.56", false, "одна тысяча двести тридцать четыре "},
      {"21", true, "двадцать один рубль 00 копеек"},
      {"5000", true, "пять тысяч рублей 00 копеек"},
      {"2000000.01", true, "два миллиона рублей 01 копейка"},
      {"11002.03", true, "одиннадцать тысяч два рубля 03 копейки"},
      {"0.5", true, "ноль рублей 50 копеек"},
      {"0.5", false, "ноль"},
      {"-7", true, "семь рублей 00 копеек"},
      {"1000000000000", true, ""},
  };
  ExpectWords(cases);
}

TEST(InWords, RoundsHalvesUpToWholeKopecks) {
  const Case cases[] = {
      {"0.994", true, "ноль рублей 99 копеек"},
      {"0.995", true, "один рубль 00 копеек"},
      {"0.0049", true, "ноль рублей 00 копеек"},
      {"0.005", true, "ноль рублей 01 копейка"},
      {"-0.005", true, "ноль рублей 01 копейка"},
      {"-2.5051", true, "два рубля 51 копейка"},
      {"999999999999.99", true,
       "девятьсот девяносто девять миллиардов девятьсот девяносто девять миллионов "
       "девятьсот девяносто девять тысяч девятьсот девяносто девять рублей 99 копеек"},
      {"999999999999.995", true, ""},
      {"922337203685477.5807", true, ""},
      {"-922337203685477.5808", true, ""},
  };
  ExpectWords(cases);
}

TEST(InWords, ChoosesTheKopeckForm) {
  const Case cases[] = {
      {"0", true, "ноль рублей 00 копеек"},
      {"1.01", true, "один рубль 01 копейка"},
      {"1.02", true, "один рубль 02 копейки"},
      {"1.05", true, "один рубль 05 копеек"},
      {"1.11", true, "один рубль 11 копеек"},
      {"1.14", true, "один рубль 14 копеек"},
      {"1.21", true, "один рубль 21 копейка"},
      {"1.22", true, "один рубль 22 копейки"},
  };
  ExpectWords(cases);
}

TEST(InWords, ChoosesUnitFormsAndGenders) {
  const Case cases[] = {
      {"1", true, "один рубль 00 копеек"},
      {"2", true, "два рубля 00 копеек"},
      {"5", true, "пять рублей 00 копеек"},
      {"10", true, "десять рублей 00 копеек"},
      {"11", true, "одиннадцать рублей 00 копеек"},
      {"12", true, "двенадцать рублей 00 копеек"},
      {"19", true, "девятнадцать рублей 00 копеек"},
      {"110", true, "сто десять рублей 00 копеек"},
      {"111", true, "сто одиннадцать рублей 00 копеек"},
      {"342", true, "триста сорок два рубля 00 копеек"},
      {"1000", true, "одна тысяча рублей 00 копеек"},
      {"2000", true, "две тысячи рублей 00 копеек"},
      {"11000", true, "одиннадцать тысяч рублей 00 копеек"},
      {"12000", true, "двенадцать тысяч рублей 00 копеек"},
      {"21000", true, "двадцать одна тысяча рублей 00 копеек"},
      {"1000000", true, "один миллион рублей 00 копеек"},
      {"5000000", true, "пять миллионов рублей 00 копеек"},
      {"1001001", true, "один миллион одна тысяча один рубль 00 копеек"},
      {"2002002", true, "два миллиона две тысячи два рубля 00 копеек"},
      {"1000000001", true, "один миллиард один рубль 00 копеек"},
      {"2000000000", true, "два миллиарда рублей 00 копеек"},
      {"11000000000", true, "одиннадцать миллиардов рублей 00 копеек"},
      {"101000011000", true, "сто один миллиард одиннадцать тысяч рублей 00 копеек"},
  };
  ExpectWords(cases);
}

TEST(InWords, WithoutUnitNamesWritesOnlyTheRoublesInWords) {
  const Case cases[] = {
      {"0.99", false, "ноль"},
      {"0.995", false, "один "},
      {"21", false, "двадцать один "},
      {"1000", false, "одна тысяча "},
      {"5000000.75", false, "пять миллионов "},
      {"2001000000", false, "два миллиарда один миллион "},
      {"-11", false, "одиннадцать "},
  };
  ExpectWords(cases);
}

}  // namespace
}  // namespace tsruntime
