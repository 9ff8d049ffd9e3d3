// clsZKString: packed numbers, ConvWin2Dos, IsVarEQ, StrToVarNull.
#include <cstring>
#include <limits>

#include "text/text_test_util.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

template <class T, class Bits>
T FromBits(Bits bits) {
  static_assert(sizeof(T) == sizeof(Bits));
  T v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

String Ansi(std::vector<uint8_t> bytes) { return AnsiToString(bytes); }

TEST(ConvMKAndCV, PackLittleEndianBytesOneCharacterEachAndUnpackThemBitForBit) {
  auto s = New<clsZKString>();
  EXPECT_EQ(s->ConvMKI(1), String(u"\x01\0", 2));
  EXPECT_EQ(s->ConvMKL(65), String(u"A\0\0\0", 4));
  EXPECT_EQ(s->ConvMKS(1.0f), Ansi({0, 0, 0x80, 0x3F}));
  EXPECT_EQ(s->ConvMKD(1.0), Ansi({0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  EXPECT_EQ(s->ConvMKD(0.0), String(8, u'\0')) << "zero bytes are kept, not trimmed";
  EXPECT_EQ(s->ConvMKI(static_cast<int16_t>(0xC1C0)), u"АБ") << "bytes through the ANSI page";
  using D = std::numeric_limits<double>;
  for (double d : {-0.0, -123456.789, D::denorm_min(), -D::infinity(),
                   FromBits<double>(0xFFF8000000000123ULL), FromBits<double>(0x7FF0000000000001ULL)}) {
    String packed = s->ConvMKD(d);
    const double back = s->ConvCVD(packed);
    EXPECT_EQ(std::memcmp(&back, &d, 8), 0) << d;
  }
  for (float f : {-0.0f, -1e30f, FromBits<float>(0x7FC00001u), FromBits<float>(0xFF800001u)}) {
    String packed = s->ConvMKS(f);
    const float back = s->ConvCVS(packed);
    EXPECT_EQ(std::memcmp(&back, &f, 4), 0) << f;
  }
  for (int16_t i : {int16_t{-1}, std::numeric_limits<int16_t>::min(), int16_t{0x1A98}}) {
    String packed = s->ConvMKI(i);
    EXPECT_EQ(s->ConvCVI(packed), i);
  }
  for (int32_t i : {-1, std::numeric_limits<int32_t>::min(), static_cast<int32_t>(0x98AD1A00u)}) {
    String packed = s->ConvMKL(i);
    EXPECT_EQ(s->ConvCVL(packed), i);
  }
  String shorter = u"A", longer = u"ABxyz", unmapped = u"A中";
  EXPECT_EQ(s->ConvCVL(shorter), 65) << "missing bytes read as zero";
  EXPECT_EQ(s->ConvCVI(longer), 0x4241) << "extra bytes ignored";
  EXPECT_EQ(s->ConvCVL(unmapped), 0x3F41) << "a character the code page lacks reads as '?'";
  EXPECT_EQ(unmapped, u"A?") << "the ANSI round trip is written back";
}

TEST(ConvWin2Dos, CarriesOemBytesAndLosesTheLastCharacter) {
  auto s = New<clsZKString>();
  String source = u"Привет", dest = u"old";
  EXPECT_TRUE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(StringToAnsi(dest), (std::vector<uint8_t>{0x8F, 0xE0, 0xA8, 0xA2, 0xA5}))
      << "written through the ANSI code page, the text gives the OEM codes of \"Приве\"";
  source = u"中ab";
  EXPECT_TRUE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(source, u"?ab") << "the ANSI round trip is written back";
  EXPECT_EQ(dest, u"?a");
  source = u"";
  EXPECT_FALSE(s->ConvWin2Dos(source, dest)) << "the empty string fails quietly";
  EXPECT_EQ(dest, u"");
}

TEST(IsVarEQ, TreatsEmptyAndNullAsOrdinaryValues) {
  const struct {
    const char* what;
    Variant a, b;
    bool expected;
  } cases[] = {
      {"Empty and Empty", Variant(), Variant(), true},
      {"Null and Null", Variant::Null(), Variant::Null(), true},
      {"Null and Empty", Variant::Null(), Variant(), false},
      {"0 and Empty", Variant(int32_t{0}), Variant(), false},
      {"empty string and Empty", Variant(u""), Variant(), false},
      {"strings differing in case", Variant(u"a"), Variant(u"A"), false},
      {"string and number", Variant(u"1"), Variant(int32_t{1}), false},
      {"1 and 1.0", Variant(int16_t{1}), Variant(1.0), true},
      {"True and -1", Variant(true), Variant(int32_t{-1}), true},
      {"arrays cannot be compared", Variant(SafeArray::FromStrings({u"a"})),
       Variant(SafeArray::FromStrings({u"a"})), false},
  };
  auto s = New<clsZKString>();
  for (const auto& c : cases) EXPECT_EQ(s->IsVarEQ(c.a, c.b), c.expected) << c.what;
}

TEST(StrToVarNull, TurnsBlankTextAndNonTextIntoNull) {
  auto s = New<clsZKString>();
  EXPECT_TRUE(s->StrToVarNull(Variant(u"")).isNull());
  EXPECT_TRUE(s->StrToVarNull(Variant(int32_t{5})).isNull());
  EXPECT_TRUE(s->StrToVarNull(Variant(), 3).isNull());
  EXPECT_EQ(s->StrToVarNull(Variant(u"abcdef"), 3), Variant(u"abc"));
  EXPECT_EQ(s->StrToVarNull(Variant(u"  "), 0), Variant(u"  ")) << "spaces are not blank";
}

}  // namespace
}  // namespace tsruntime
