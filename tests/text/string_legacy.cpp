// clsZKString: packed numbers, ConvWin2Dos, IsVarEQ, StrToVarNull.
#include <bit>

#include "text/text_test_util.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

TEST(StringLegacy, ConvMKPacksLittleEndianBytesAndConvCVUnpacksThemBitForBit) {
  auto s = New<clsZKString>();
  EXPECT_EQ(s->ConvMKL(65), String(u"A\0\0\0", 4));
  EXPECT_EQ(s->ConvMKS(1.0f), AnsiToString(std::vector<uint8_t>{0, 0, 0x80, 0x3F}));
  EXPECT_EQ(s->ConvMKD(0.0), String(8, u'\0')) << "zero bytes are kept, not trimmed";
  EXPECT_EQ(s->ConvMKI(int16_t(0xC1C0)), u"АБ") << "bytes go through the ANSI code page";
  // Each pattern read as a Double, its top half as a Single, its low half as a Long and its
  // top quarter as an Integer: -0, NaN payloads, infinities, extremes.
  for (uint64_t bits : {0x8000000000000000u, 0xFFF8000000000123u, 0x7FF0000000000001u,
                        0xFFF0000000000000u, 0x7FC0000198AD1A00u, 0xFF80000080000000u,
                        0x3F8000007FFFFFFFu}) {
    const uint32_t high = bits >> 32;
    String d = s->ConvMKD(std::bit_cast<double>(bits)), f = s->ConvMKS(std::bit_cast<float>(high));
    String l = s->ConvMKL(int32_t(bits)), i = s->ConvMKI(int16_t(high >> 16));
    EXPECT_EQ(std::bit_cast<uint64_t>(s->ConvCVD(d)), bits) << std::hex << bits;
    EXPECT_EQ(std::bit_cast<uint32_t>(s->ConvCVS(f)), high) << std::hex << bits;
    EXPECT_EQ(s->ConvCVL(l), int32_t(bits)) << std::hex << bits;
    EXPECT_EQ(s->ConvCVI(i), int16_t(high >> 16)) << std::hex << bits;
  }
  String shorter = u"A", longer = u"ABxyz", unmapped = u"A中";
  EXPECT_EQ(s->ConvCVL(shorter), 65) << "missing bytes read as zero";
  EXPECT_EQ(s->ConvCVI(longer), 0x4241) << "extra bytes are ignored";
  EXPECT_EQ(s->ConvCVL(unmapped), 0x3F41) << "a character the code page lacks reads as '?'";
  EXPECT_EQ(unmapped, u"A?") << "the ANSI round trip is written back";
}

TEST(StringLegacy, ConvWin2DosIsVarEQAndStrToVarNullKeepTheirOddCorners) {
  auto s = New<clsZKString>();
  String source = u"Привет", dest = u"old";
  EXPECT_TRUE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(StringToAnsi(dest), (std::vector<uint8_t>{0x8F, 0xE0, 0xA8, 0xA2, 0xA5}))
      << "written through the ANSI code page, the text gives the OEM codes of \"Приве\"";
  source = u"";
  EXPECT_FALSE(s->ConvWin2Dos(source, dest)) << "the empty string fails quietly";
  EXPECT_EQ(dest, u"");
  const Variant empty, null = Variant::Null(), array(SafeArray::FromStrings({u"a"}));
  EXPECT_TRUE(s->IsVarEQ(empty, empty) && s->IsVarEQ(null, null) && s->IsVarEQ(int16_t{1}, 1.0));
  EXPECT_FALSE(s->IsVarEQ(null, empty) || s->IsVarEQ(0, empty) || s->IsVarEQ(u"", empty));
  EXPECT_FALSE(s->IsVarEQ(u"a", u"A") || s->IsVarEQ(u"1", 1)) << "strings equal only strings";
  EXPECT_FALSE(s->IsVarEQ(array, array)) << "arrays cannot be compared";
  EXPECT_TRUE(s->StrToVarNull(u"").isNull() && s->StrToVarNull(5).isNull());
  EXPECT_EQ(s->StrToVarNull(u"abcdef", 3), Variant(u"abc"));
  EXPECT_EQ(s->StrToVarNull(u"  "), Variant(u"  ")) << "spaces are not blank";
}

}  // namespace
}  // namespace tsruntime
