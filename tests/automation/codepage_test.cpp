// Text encodings: byte strings through the ANSI and OEM code pages, and UTF-8 at the
// operating-system boundary.
#include <gtest/gtest.h>

#include <random>

#include "support/outcome.h"
#include "tsruntime/automation/codepage.h"

namespace tsruntime {
namespace {

using testing::RaisedNumber;
using testing::U8;

TEST(CodePages, EveryByteRoundTripsThroughText) {
  std::vector<uint8_t> all(256);
  for (int b = 0; b < 256; ++b) all[b] = static_cast<uint8_t>(b);
  for (int cp : {1251, 866, 1252, 437}) {
    const String text = DecodeBytes(cp, all);
    ASSERT_EQ(text.size(), 256u) << "code page " << cp;
    EXPECT_EQ(EncodeBytes(cp, text), all) << "code page " << cp;
    for (int b = 0; b < 256; ++b) {
      EXPECT_EQ(std::count(text.begin(), text.end(), text[b]), 1)
          << "byte " << b << " shares its character with another byte in code page " << cp;
    }
  }
}

struct CharRow {
  const char* what;
  char16_t ch;
  int ansi;  // byte in 1251
  int oem;   // byte in 866
};

TEST(CodePages, MapCyrillicToTheRightBytes) {
  const CharRow rows[] = {
      {"capital Pe", u'П', 0xCF, 0x8F},   {"small pe", u'п', 0xEF, 0xAF},
      {"capital A", u'А', 0xC0, 0x80},    {"small ya", u'я', 0xFF, 0xEF},
      {"capital Yo", u'Ё', 0xA8, 0xF0},   {"small yo", u'ё', 0xB8, 0xF1},
      {"numero sign", u'№', 0xB9, 0xFC},  {"Latin A", u'A', 0x41, 0x41},
      {"no-break space", u'\u00A0', 0xA0, 0xFF},
      {"euro sign", u'€', 0x88, '?'},     {"em dash", u'—', 0x97, '?'},
      {"box corner", u'┌', '?', 0xDA},    {"a Chinese character", u'中', '?', '?'},
      {"the replacement character", u'\uFFFD', '?', '?'},
      {"NUL", u'\0', 0, 0},
  };
  for (const CharRow& row : rows) {
    const String one(1, row.ch);
    EXPECT_EQ(EncodeBytes(1251, one), std::vector<uint8_t>{static_cast<uint8_t>(row.ansi)})
        << row.what << " in 1251";
    EXPECT_EQ(EncodeBytes(866, one), std::vector<uint8_t>{static_cast<uint8_t>(row.oem)})
        << row.what << " in 866";
    if (row.ansi != '?' || row.ch == u'?') {
      const uint8_t b = static_cast<uint8_t>(row.ansi);
      EXPECT_EQ(DecodeBytes(1251, std::span(&b, 1)), one) << row.what << " from 1251";
    }
  }
}

TEST(CodePages, AnsiRoundTripReplacesWhatTheCodePageLacks) {
  ASSERT_EQ(AnsiCodePage(), 1251);
  ASSERT_EQ(OemCodePage(), 866);
  EXPECT_EQ(U8(AnsiRoundTrip(u"Привет, мир! €")), "Привет, мир! €");
  EXPECT_EQ(U8(AnsiRoundTrip(u"中文 ok")), "?? ok");
  // Each half of a surrogate pair is one character the code page lacks.
  EXPECT_EQ(U8(AnsiRoundTrip(u"a\U0001F600b")), "a??b");
  EXPECT_EQ(U8(AnsiRoundTrip(u"")), "");
  EXPECT_EQ(StringToAnsi(u"Ая"), (std::vector<uint8_t>{0xC0, 0xFF}));
  const std::vector<uint8_t> bytes = {0xCF, 0xF0, 0xE8};
  EXPECT_EQ(U8(AnsiToString(bytes)), "При");
}

TEST(CodePages, CanBeSetToAnotherSingleByteCodePageOnly) {
  EXPECT_EQ(RaisedNumber([] { SetAnsiCodePage(65001); }), 5) << "UTF-8 is not single-byte";
  EXPECT_EQ(RaisedNumber([] { SetAnsiCodePage(0); }), 5);
  EXPECT_EQ(RaisedNumber([] { SetOemCodePage(-866); }), 5);
  EXPECT_EQ(RaisedNumber([] { DecodeBytes(12345, {}); }), 5);
  EXPECT_EQ(AnsiCodePage(), 1251) << "a refused code page leaves the setting alone";

  SetAnsiCodePage(1252);
  SetOemCodePage(437);
  EXPECT_EQ(AnsiCodePage(), 1252);
  EXPECT_EQ(U8(AnsiToString(std::vector<uint8_t>{0xC0})), "À");
  EXPECT_EQ(U8(AnsiRoundTrip(u"Ж")), "?");
  EXPECT_EQ(EncodeBytes(OemCodePage(), u"┌"), std::vector<uint8_t>{0xDA});
  SetAnsiCodePage(1251);
  SetOemCodePage(866);
  EXPECT_EQ(U8(AnsiRoundTrip(u"Ж")), "Ж");
}

TEST(Utf8, ConvertsBothWaysIncludingSurrogatePairs) {
  const std::pair<String, std::string> rows[] = {
      {u"", ""},
      {u"abc", "abc"},
      {u"Привет", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"},
      {u"€", "\xE2\x82\xAC"},
      {u"\U0001F600", "\xF0\x9F\x98\x80"},
      {u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
      {String(1, u'\0'), std::string(1, '\0')},
      {u"\u07FF\u0800\uFFFF", "\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
  };
  for (const auto& [utf16, utf8] : rows) {
    EXPECT_EQ(ToUtf8(utf16), utf8) << utf8;
    EXPECT_EQ(FromUtf8(utf8), utf16) << utf8;
  }
}

TEST(Utf8, ReplacesWhatCannotBeConverted) {
  const std::pair<String, std::string> to_utf8[] = {
      {String(u"a\xD800"), "a\xEF\xBF\xBD"},
      {String(u"\xDC00z"), "\xEF\xBF\xBDz"},
      {String(u"\xDC00\xD800"), "\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& [utf16, utf8] : to_utf8) EXPECT_EQ(ToUtf8(utf16), utf8);

  const std::pair<std::string, String> from_utf8[] = {
      {"a\x80z", u"a\uFFFDz"},
      {"\xFF", u"\uFFFD"},
      {"\xC0\xAF", u"\uFFFD\uFFFD"},            // overlong "/"
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},  // an encoded surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
      {"\xE2\x82", u"\uFFFD\uFFFD"},                      // cut short
      {"\xE2\x82z", u"\uFFFD\uFFFDz"},
      {"\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& [utf8, utf16] : from_utf8) {
    EXPECT_EQ(U8(FromUtf8(utf8)), U8(utf16)) << "bytes of length " << utf8.size();
  }
}

TEST(Utf8, AnyBytesGiveWellFormedText) {
  std::mt19937 rng(7);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(rng() % 12, '\0');
    for (char& c : bytes) c = static_cast<char>(rng() % 256);
    const String text = FromUtf8(bytes);
    for (size_t i = 0; i < text.size(); ++i) {
      const char16_t c = text[i];
      if (c >= 0xD800 && c <= 0xDBFF) {
        ASSERT_TRUE(i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF);
        ++i;
      } else {
        ASSERT_FALSE(c >= 0xDC00 && c <= 0xDFFF) << "an unpaired low surrogate";
      }
    }
    EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
  }
  EXPECT_EQ(FromAscii("Init"), u"Init");
  EXPECT_TRUE(EqualsAsciiNoCase(u"GetObjString", u"getobjSTRING"));
  EXPECT_FALSE(EqualsAsciiNoCase(u"Ж", u"ж")) << "only ASCII letters match without case";
  EXPECT_FALSE(EqualsAsciiNoCase(u"a", u"ab"));
  EXPECT_FALSE(EqualsAsciiNoCase(u"@", u"`"));
}

}  // namespace
}  // namespace tsruntime
