// clsZKString: packed numbers, ConvWin2Dos, IsVarEQ, StrToVarNull.
#include <cmath>
#include <cstring>
#include <limits>

#include "string_test_support.h"
#include "tsruntime/automation/codepage.h"

namespace tsruntime {
namespace {

using string_test::NewString;

template <class T>
bool SameBits(T a, T b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

template <class T>
T FromBits(std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t> bits) {
  T v;
  std::memcpy(&v, &bits, sizeof(T));
  return v;
}

TEST(ConvMK, PacksLittleEndianBytesOneCharacterEach) {
  auto s = NewString();
  EXPECT_EQ(s->ConvMKI(1), String(u"\x01\0", 2));
  EXPECT_EQ(s->ConvMKI(-1), AnsiToString(std::vector<uint8_t>{0xFF, 0xFF}));
  EXPECT_EQ(s->ConvMKL(65), String(u"A\0\0\0", 4));
  EXPECT_EQ(s->ConvMKL(0x41424344), u"DCBA");
  EXPECT_EQ(s->ConvMKS(1.0f), AnsiToString(std::vector<uint8_t>{0, 0, 0x80, 0x3F}));
  EXPECT_EQ(s->ConvMKD(1.0), AnsiToString(std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  EXPECT_EQ(s->ConvMKD(0.0), String(8, u'\0')) << "zero bytes are kept, not trimmed";
  // Bytes 0xC0.. are Cyrillic letters in the ANSI code page.
  EXPECT_EQ(s->ConvMKI(static_cast<int16_t>(0xC1C0)), u"АБ");
}

TEST(ConvCV, UnpacksWhatConvMKPackedBitForBit) {
  auto s = NewString();
  const double doubles[] = {0.0,
                            -0.0,
                            1.5,
                            -123456.789,
                            std::numeric_limits<double>::max(),
                            std::numeric_limits<double>::denorm_min(),
                            std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::quiet_NaN(),
                            FromBits<double>(0xFFF8000000000123ULL),
                            FromBits<double>(0x7FF0000000000001ULL)};
  for (double d : doubles) {
    String packed = s->ConvMKD(d);
    EXPECT_TRUE(SameBits(s->ConvCVD(packed), d)) << d;
  }
  const float singles[] = {0.0f, -0.0f, 3.25f, -1e30f, std::numeric_limits<float>::infinity(),
                           FromBits<float>(0x7FC00001u), FromBits<float>(0xFF800001u)};
  for (float f : singles) {
    String packed = s->ConvMKS(f);
    EXPECT_TRUE(SameBits(s->ConvCVS(packed), f)) << f;
  }
  for (int16_t i : {int16_t{0}, int16_t{1}, int16_t{-1}, std::numeric_limits<int16_t>::min(),
                    std::numeric_limits<int16_t>::max(), int16_t{0x1A98}}) {
    String packed = s->ConvMKI(i);
    EXPECT_EQ(s->ConvCVI(packed), i);
  }
  for (int32_t i : {0, 1, -1, 65, std::numeric_limits<int32_t>::min(),
                    std::numeric_limits<int32_t>::max(), static_cast<int32_t>(0x98AD1A00u)}) {
    String packed = s->ConvMKL(i);
    EXPECT_EQ(s->ConvCVL(packed), i);
  }
}

TEST(ConvCV, TakesMissingBytesAsZeroAndIgnoresExtraOnes) {
  auto s = NewString();
  String shorter = u"A";
  EXPECT_EQ(s->ConvCVL(shorter), 65);
  String empty;
  EXPECT_EQ(s->ConvCVD(empty), 0.0);
  String longer = u"AB" + String(u"xyz");
  EXPECT_EQ(s->ConvCVI(longer), 0x4241);
}

TEST(ConvCV, WritesTheAnsiRoundTripBackIntoTheArgument) {
  auto s = NewString();
  String text = u"A中\0\0";
  text.resize(4);
  EXPECT_EQ(s->ConvCVL(text), 0x3F41) << "a character the code page lacks reads as '?'";
  EXPECT_EQ(text, String(u"A?\0\0", 4));
  String cyrillic = u"Жж";
  s->ConvCVI(cyrillic);
  EXPECT_EQ(cyrillic, u"Жж") << "representable text is unchanged";
}

TEST(ConvWin2Dos, CarriesOemBytesAndLosesTheLastCharacter) {
  auto s = NewString();
  String source = u"Привет", dest = u"old";
  EXPECT_TRUE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(dest.size(), 5u);
  EXPECT_EQ(StringToAnsi(dest), (std::vector<uint8_t>{0x8F, 0xE0, 0xA8, 0xA2, 0xA5}))
      << "written through the ANSI code page, the text gives the OEM codes of \"Приве\"";
  EXPECT_EQ(source, u"Привет");

  String ascii = u"Hello!";
  EXPECT_TRUE(s->ConvWin2Dos(ascii, dest));
  EXPECT_EQ(dest, u"Hello");

  String single = u"Ё";
  EXPECT_TRUE(s->ConvWin2Dos(single, dest));
  EXPECT_EQ(dest, u"");
}

TEST(ConvWin2Dos, EmptySourceFailsQuietly) {
  auto s = NewString();
  String source, dest = u"old";
  EXPECT_FALSE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(dest, u"");
}

TEST(ConvWin2Dos, WritesTheAnsiRoundTripBackIntoTheSource) {
  auto s = NewString();
  String source = u"中ab", dest;
  EXPECT_TRUE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(source, u"?ab");
  EXPECT_EQ(dest, u"?a");
}

TEST(IsVarEQ, TreatsEmptyAndNullAsOrdinaryValues) {
  struct Case {
    const char* what;
    Variant a, b;
    bool expected;
  } cases[] = {
      {"Empty and Empty", Variant(), Variant(), true},
      {"Null and Null", Variant::Null(), Variant::Null(), true},
      {"Null and Empty", Variant::Null(), Variant(), false},
      {"0 and Empty", Variant(int32_t{0}), Variant(), false},
      {"empty string and Empty", Variant(u""), Variant(), false},
      {"equal strings", Variant(u"abc"), Variant(u"abc"), true},
      {"strings differing in case", Variant(u"a"), Variant(u"A"), false},
      {"string and number", Variant(u"1"), Variant(int32_t{1}), false},
      {"1 and 1.0", Variant(int16_t{1}), Variant(1.0), true},
      {"Long and Currency", Variant(int32_t{3}), Variant(Currency::FromRaw(30000)), true},
      {"True and -1", Variant(true), Variant(int32_t{-1}), true},
      {"dates", Variant(Date{45000.25}), Variant(Date{45000.25}), true},
      {"arrays cannot be compared", Variant(SafeArray::FromStrings({u"a"})),
       Variant(SafeArray::FromStrings({u"a"})), false},
      {"objects cannot be compared", Variant(NewString()), Variant(NewString()), false},
  };
  auto s = NewString();
  for (const auto& c : cases) EXPECT_EQ(s->IsVarEQ(c.a, c.b), c.expected) << c.what;
}

TEST(StrToVarNull, TurnsBlankTextIntoNull) {
  struct Case {
    const char* what;
    Variant value;
    int32_t trim_len;
    Variant expected;
  } cases[] = {
      {"empty string", Variant(u""), 0, Variant::Null()},
      {"number", Variant(int32_t{5}), 0, Variant::Null()},
      {"Empty", Variant(), 3, Variant::Null()},
      {"cut to TrimLen", Variant(u"abcdef"), 3, Variant(u"abc")},
      {"TrimLen 0 keeps the text", Variant(u"abc"), 0, Variant(u"abc")},
      {"TrimLen beyond the length", Variant(u"abc"), 10, Variant(u"abc")},
      {"spaces are not blank", Variant(u"  "), 0, Variant(u"  ")},
  };
  auto s = NewString();
  for (const auto& c : cases) {
    const Variant r = s->StrToVarNull(c.value, c.trim_len);
    EXPECT_EQ(r.type(), c.expected.type()) << c.what;
    EXPECT_TRUE(r == c.expected) << c.what;
  }
}

}  // namespace
}  // namespace tsruntime
