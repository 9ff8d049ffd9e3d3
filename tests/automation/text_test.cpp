// Text: byte strings through the ANSI and OEM code pages, UTF-8, binary and text compare,
// sort keys, and the ordering of Variants.
#include <gtest/gtest.h>

#include <numeric>
#include <set>

#include "support/described_object.h"
#include "support/outcome.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

using testing::Described;
using testing::Outcome;
using testing::U8;

TEST(CodePages, RoundTripEveryByteAndMapCyrillicToItsBytes) {
  std::vector<uint8_t> all(256);
  std::iota(all.begin(), all.end(), 0);
  for (int cp : {1251, 866}) {
    const String text = DecodeBytes(cp, all);
    EXPECT_EQ(EncodeBytes(cp, text), all) << cp;
    EXPECT_EQ(std::set<char16_t>(text.begin(), text.end()).size(), 256u) << cp;
    EXPECT_EQ(ToUtf8(text.substr(0, 128)), std::string(all.begin(), all.begin() + 128)) << cp;
  }
  // Cyrillic goes to its bytes, what a code page lacks to a question mark.
  const String text = u"ПяЁё№\u00A0€┌中";  // the last three lack a byte in one or both
  EXPECT_EQ(EncodeBytes(1251, text),
            (std::vector<uint8_t>{0xCF, 0xFF, 0xA8, 0xB8, 0xB9, 0xA0, 0x88, '?', '?'}));
  EXPECT_EQ(EncodeBytes(866, text),
            (std::vector<uint8_t>{0x8F, 0xEF, 0xF0, 0xF1, 0xFC, 0xFF, '?', 0xDA, '?'}));
  EXPECT_EQ(U8(AnsiToString(std::vector<uint8_t>{0xCF, 0xF0, 0xE8, 0x88})), "При€");
  EXPECT_EQ(U8(AnsiRoundTrip(u"Ёж 中 a\U0001F600b")), "Ёж ? a??b") << "each surrogate is one '?'";
  EXPECT_EQ(Outcome([] { SetAnsiCodePage(65001); }), "error 5") << "UTF-8 is not single-byte";
}

TEST(Utf8, ConvertsBothWaysAndReplacesWhatIsMalformed) {
  const String text = u"Пр\u07FF\uFFFF\U0010FFFF" + String(1, u'\0');
  const std::string utf8 =
      "\xD0\x9F\xD1\x80\xDF\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF" + std::string(1, '\0');
  EXPECT_EQ(ToUtf8(text), utf8);
  EXPECT_EQ(FromUtf8(utf8), text);
  EXPECT_EQ(ToUtf8(String(u"a\xD800")), "a\xEF\xBF\xBD") << "a lone surrogate";
  // A stray byte, an overlong "/", an encoded surrogate, a sequence cut short.
  EXPECT_EQ(FromUtf8("\x80|\xC0\xAF|\xED\xA0\x80|\xE2\x82"),
            u"\uFFFD|\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD");
}

TEST(CompareStrings, BinaryIsByCodeUnitAndTextIgnoresCaseWithLatinFirst) {
  ScopedLocale l("ru_RU");
  const std::tuple<const char16_t*, const char16_t*, int, int> rows[] = {  // binary, text
      {u"abc", u"ABC", 1, 0}, {u"B", u"a", -1, 1},  {u"ab", u"abc", -1, -1}, {u"ёж", u"ЁЖ", 1, 0},
      {u"Я", u"а", -1, 1},    {u"ё", u"ж", 1, -1},  {u"z", u"А", -1, -1},  {u"10", u"9", -1, -1},
      {u"\U0001F600", u"\uFFFD", -1, -1},
  };
  for (const auto& [a, b, binary, text] : rows) {
    const std::string pair = "\"" + U8(a) + "\" against \"" + U8(b) + "\"";
    EXPECT_EQ(CompareStrings(a, b, vbBinaryCompare), binary) << "binary " << pair;
    EXPECT_EQ(CompareStrings(a, b, vbTextCompare), text) << "text " << pair;
    EXPECT_EQ(CompareStrings(a, b, vbDatabaseCompare), text) << "database " << pair;
  }
}

TEST(TextSortKey, OrdersExactlyAsTextCompareAndItsPrefixIsItsFirstBytes) {
  // Every text of up to two characters where case, ё and punctuation matter, and two long.
  std::vector<String> words = {u"", String(500, u'ж'), String(499, u'Ж') + u'з'};
  const std::u16string_view alphabet = u" -.9aAzZеЕёЁжЖяЯ";
  for (char16_t a : alphabet) {
    words.push_back(String(1, a));
    for (char16_t b : alphabet) words.push_back(String{a, b});
  }
  for (const char* locale : {"ru_RU", "en_US"}) {
    ScopedLocale l(locale);
    std::vector<std::string> keys;
    for (const String& w : words) keys.push_back(TextSortKey(w));
    for (size_t i = 0; i < words.size(); ++i) {
      uint64_t first_bytes = 0;
      for (size_t b = 0; b < 8; ++b) {
        first_bytes = first_bytes << 8 | (b < keys[i].size() ? static_cast<uint8_t>(keys[i][b]) : 0);
      }
      ASSERT_EQ(TextSortKeyPrefix(words[i]), first_bytes) << U8(words[i]);
      for (size_t j = 0; j < words.size(); ++j) {
        ASSERT_EQ((keys[i] > keys[j]) - (keys[i] < keys[j]),
                  CompareStrings(words[i], words[j], vbTextCompare))
            << "\"" << U8(words[i]) << "\" against \"" << U8(words[j]) << "\" under " << locale;
      }
    }
  }
}

TEST(CompareVariants, OrdersNumbersStringsAndEmptyAsTheHostRuntime) {
  ScopedLocale l("ru_RU");
  const std::tuple<const char*, Variant, Variant, int32_t, const char*> rows[] = {
      {"Long 1 and Double 1.0", Variant(int32_t{1}), Variant(1.0), 0, "0"},
      {"Empty and \"a\"", Variant(), Variant(u"a"), 0, "-1"},
      {"a number below a string", Variant(int32_t{5}), Variant(u"1"), 0, "-1"},
      {"a string above a number", Variant(u"1"), Variant(int32_t{5}), 0, "1"},
      {"Currency exactly", Variant(Currency{INT64_MAX}), Variant(Currency{INT64_MAX - 1}), 0, "1"},
      {"Null and 1", Variant::Null(), Variant(int32_t{1}), 0, "error 94"},
      {"two objects through their default members", Described(u"abc"), Described(u"ABC"), 1, "0"},
      {"Nothing", Variant::Nothing(), Variant(u""), 0, "error 91"},
  };
  for (const auto& [what, a, b, mode, order] : rows) {
    EXPECT_EQ(Outcome([&] { return std::to_string(CompareVariants(a, b, mode)); }), order)
        << what;
    EXPECT_EQ(VariantEquals(a, b, mode), order == std::string("0")) << what;
  }
}

}  // namespace
}  // namespace tsruntime
