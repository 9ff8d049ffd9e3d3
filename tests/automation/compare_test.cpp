// String and Variant comparison: binary and text compare, sort keys, InStr-like search,
// and the ordering and equality of Variants.
#include <gtest/gtest.h>

#include <random>

#include "support/outcome.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Outcome;
using testing::U8;

struct StringRow {
  const char16_t* a;
  const char16_t* b;
  int binary;
  int text;
};

TEST(CompareStrings, BinaryIsByCodeUnitAndTextIgnoresCase) {
  ScopedLocale l("ru_RU");
  const StringRow rows[] = {
      {u"abc", u"abc", 0, 0},
      {u"abc", u"ABC", 1, 0},
      {u"B", u"a", -1, 1},
      {u"a", u"B", 1, -1},
      {u"", u"", 0, 0},
      {u"", u"a", -1, -1},
      {u"ab", u"abc", -1, -1},
      {u"ёж", u"ЁЖ", 1, 0},
      {u"Ёлка", u"ёЛКА", -1, 0},
      {u"Я", u"а", -1, 1},
      {u"а", u"Б", 1, -1},
      {u"яблоко", u"Арбуз", 1, 1},
      {u"е", u"ё", -1, -1},
      {u"ё", u"ж", 1, -1},
      {u"Ё", u"ж", -1, -1},
      {u"ж", u"Ё", 1, 1},
      {u"Z", u"а", -1, -1},
      {u"10", u"9", -1, -1},
      {u"a b", u"a-b", -1, -1},
      // Binary order is by UTF-16 code unit: a surrogate sorts below U+FFFD.
      {u"\U0001F600", u"\uFFFD", -1, -1},
  };
  for (const StringRow& row : rows) {
    EXPECT_EQ(CompareStrings(row.a, row.b, vbBinaryCompare), row.binary)
        << "binary \"" << U8(row.a) << "\" against \"" << U8(row.b) << "\"";
    EXPECT_EQ(CompareStrings(row.a, row.b, vbTextCompare), row.text)
        << "text \"" << U8(row.a) << "\" against \"" << U8(row.b) << "\"";
    EXPECT_EQ(CompareStrings(row.a, row.b, vbDatabaseCompare), row.text)
        << "database \"" << U8(row.a) << "\" against \"" << U8(row.b) << "\"";
  }
}

TEST(CompareStrings, TextCompareSortsRussianWordsInDictionaryOrder) {
  ScopedLocale l("ru_RU");
  // Ё sorts with Е, not after Я as its code does.
  const char16_t* words[] = {u"абажур", u"Банк", u"вал", u"ёж",  u"Ель", u"Жук",
                             u"зебра",  u"Щука", u"Эхо", u"юла", u"Яма"};
  for (size_t i = 0; i + 1 < std::size(words); ++i) {
    EXPECT_EQ(CompareStrings(words[i], words[i + 1], vbTextCompare), -1)
        << U8(words[i]) << " before " << U8(words[i + 1]);
  }
}

// Random words over an alphabet where case, ё and punctuation matter.
std::vector<String> RandomWords(size_t count, unsigned seed) {
  const String alphabet = u"aAbBzZ09 -_.,ёЁеЕжЖаАяЯщЩйЙиИ";
  std::mt19937 rng(seed);
  std::vector<String> words;
  for (size_t i = 0; i < count; ++i) {
    String w(rng() % 7, u' ');
    for (char16_t& c : w) c = alphabet[rng() % alphabet.size()];
    words.push_back(std::move(w));
  }
  return words;
}

TEST(TextSortKey, OrdersExactlyAsTextCompare) {
  for (const char* locale : {"ru_RU", "en_US"}) {
    ScopedLocale l(locale);
    const std::vector<String> words = RandomWords(300, 2024);
    std::vector<std::string> keys;
    for (const String& w : words) keys.push_back(TextSortKey(w));
    for (size_t i = 0; i < words.size(); ++i) {
      for (size_t j = 0; j < words.size(); ++j) {
        const int by_key = (keys[i] > keys[j]) - (keys[i] < keys[j]);
        ASSERT_EQ(by_key, CompareStrings(words[i], words[j], vbTextCompare))
            << "\"" << U8(words[i]) << "\" against \"" << U8(words[j]) << "\" under " << locale;
      }
    }
  }
}

TEST(TextSortKey, IsLongEnoughForLongTexts) {
  ScopedLocale l("ru_RU");
  const String a(500, u'ж'), b = String(499, u'Ж') + u'з';
  EXPECT_GT(TextSortKey(a).size(), 64u);
  EXPECT_LT(TextSortKey(a), TextSortKey(b));
  EXPECT_EQ(TextSortKey(u"ЖУК"), TextSortKey(u"жук"));
}

struct FindRow {
  const char16_t* text;
  const char16_t* what;
  int64_t start;
  int64_t binary;
  int64_t text_mode;
};

TEST(FindString, FindsTheFirstMatchAtOrAfterStart) {
  ScopedLocale l("ru_RU");
  const FindRow rows[] = {
      {u"abcabc", u"c", 1, 3, 3},
      {u"abcabc", u"c", 4, 6, 6},
      {u"abcabc", u"c", 7, 0, 0},
      {u"abcabc", u"C", 1, 0, 3},
      {u"Привет", u"ВЕТ", 1, 0, 4},
      {u"ЁЖИК", u"ёж", 1, 0, 1},
      {u"aaa", u"aa", 2, 2, 2},
      {u"abc", u"abcd", 1, 0, 0},
      {u"", u"a", 1, 0, 0},
      {u"abc", u"", 1, 1, 1},
      {u"abc", u"", 2, 2, 2},
      {u"abc", u"", 4, 4, 4},
      {u"abc", u"", 5, 0, 0},
      {u"abc", u"a", 0, 0, 0},
      {u"abc", u"a", -5, 0, 0},
      {u"a\U0001F600b", u"b", 1, 4, 4},
  };
  for (const FindRow& row : rows) {
    EXPECT_EQ(FindString(row.text, row.what, row.start, vbBinaryCompare), row.binary)
        << "binary: \"" << U8(row.what) << "\" in \"" << U8(row.text) << "\" from " << row.start;
    EXPECT_EQ(FindString(row.text, row.what, row.start, vbTextCompare), row.text_mode)
        << "text: \"" << U8(row.what) << "\" in \"" << U8(row.text) << "\" from " << row.start;
  }
}

TEST(ContainsChar, MatchesCaseOnlyInTextMode) {
  ScopedLocale l("ru_RU");
  EXPECT_FALSE(ContainsChar(u"abc", u'B', vbBinaryCompare));
  EXPECT_TRUE(ContainsChar(u"abc", u'B', vbTextCompare));
  EXPECT_TRUE(ContainsChar(u"ёж", u'Ё', vbTextCompare));
  EXPECT_FALSE(ContainsChar(u"ёж", u'Е', vbTextCompare));
  EXPECT_FALSE(ContainsChar(u"", u'a', vbTextCompare));
}

struct VariantRow {
  const char* what;
  Variant a;
  Variant b;
  int32_t mode;
  const char* order;  // CompareVariants: "-1", "0", "1" or "error N"
  bool equal;         // VariantEquals
};

TEST(CompareVariants, OrdersNumbersStringsAndEmptyAsTheHostRuntime) {
  ScopedLocale l("ru_RU");
  const Variant object = Variant(New<clsZKRunTimeLib>());
  const VariantRow rows[] = {
      {"Long 1 and Double 1.0", Variant(int32_t{1}), Variant(1.0), 0, "0", true},
      {"Integer 2 and Long 1", Variant(int16_t{2}), Variant(int32_t{1}), 0, "1", false},
      {"Byte 255 and Integer 255", Variant(uint8_t{255}), Variant(int16_t{255}), 0, "0", true},
      {"Single 0.5 and Double 0.5", Variant(0.5f), Variant(0.5), 0, "0", true},
      {"Empty and 0", Variant(), Variant(int32_t{0}), 0, "0", true},
      {"Empty and -1", Variant(), Variant(int32_t{-1}), 0, "1", false},
      {"Empty and \"\"", Variant(), Variant(u""), 0, "0", true},
      {"Empty and \"a\"", Variant(), Variant(u"a"), 0, "-1", false},
      {"\"a\" and Empty", Variant(u"a"), Variant(), 0, "1", false},
      {"Empty and Empty", Variant(), Variant(), 0, "0", true},
      {"a number below a string", Variant(int32_t{5}), Variant(u"1"), 0, "-1", false},
      {"a string above a number", Variant(u"1"), Variant(int32_t{5}), 0, "1", false},
      {"the text 1 is not the number 1", Variant(u"1"), Variant(1.0), 0, "1", false},
      {"strings binary", Variant(u"abc"), Variant(u"ABC"), 0, "1", false},
      {"strings text", Variant(u"abc"), Variant(u"ABC"), 1, "0", true},
      {"Boolean True and -1", Variant(true), Variant(int32_t{-1}), 0, "0", true},
      {"Boolean False and True", Variant(false), Variant(true), 0, "1", false},
      {"Currency 1.5 and Double 1.5", Variant(Currency{15000}), Variant(1.5), 0, "0", true},
      {"Currency near the top, exactly", Variant(Currency{INT64_MAX}),
       Variant(Currency{INT64_MAX - 1}), 0, "1", false},
      {"Currency and Long", Variant(Currency{-10000}), Variant(int32_t{-1}), 0, "0", true},
      {"Decimal 0.1 and Double 0.1", Variant(Decimal::FromDouble(0.1)), Variant(0.1), 0, "0",
       true},
      {"Decimal 2 and Long 3", Variant(Decimal::FromInteger(2)), Variant(int32_t{3}), 0, "-1",
       false},
      {"Date 2 and Long 2", Variant(Date{2.0}), Variant(int32_t{2}), 0, "0", true},
      {"Null and 1", Variant::Null(), Variant(int32_t{1}), 0, "error 94", false},
      {"1 and Null", Variant(int32_t{1}), Variant::Null(), 0, "error 94", false},
      {"Null and Null", Variant::Null(), Variant::Null(), 0, "error 94", false},
      {"an object and 1", object, Variant(int32_t{1}), 0, "error 13", false},
      {"an object and itself", object, object, 0, "error 13", false},
      {"Missing and 1", Variant::Missing(), Variant(int32_t{1}), 0, "error 13", false},
      {"two arrays", Variant(SafeArray::FromStrings({u"a"})),
       Variant(SafeArray::FromStrings({u"a"})), 0, "error 13", false},
  };
  for (const VariantRow& row : rows) {
    EXPECT_EQ(Outcome([&] { return std::to_string(CompareVariants(row.a, row.b, row.mode)); }),
              row.order)
        << row.what;
    EXPECT_EQ(VariantEquals(row.a, row.b, row.mode), row.equal) << row.what;
  }
}

}  // namespace
}  // namespace tsruntime
