// clsZKMem's words and shifts against plain 32-bit arithmetic as the model: HiWord and
// LoWord sign-extend their half, DWord does not sign-extend the low half, RShift moves
// bits up (RShift(1, 31) is the sign bit) and LShift down, logically, and counts outside
// 1 to 31 give the value itself (0 and below) or 0 (32 and above).
#include <gtest/gtest.h>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKMem.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

constexpr int32_t Bits(uint32_t pattern) { return static_cast<int32_t>(pattern); }

TEST(Words, DWordJoinsTheHalvesThatHiWordAndLoWordGiveBack) {
  auto mem = New<clsZKMem>();
  const int16_t samples[] = {0, 1, -1, 0x7FFF, -32768, 0x1234, -2, 0x00FF, -256, 0x5678};
  for (int32_t x = INT16_MIN; x <= INT16_MAX; ++x) {
    for (int16_t y : samples) {
      const auto lo = static_cast<int16_t>(x);
      const int32_t joined = mem->DWord(lo, y), swapped = mem->DWord(y, lo);
      ASSERT_EQ(joined, Bits(uint32_t(uint16_t(y)) << 16 | uint16_t(lo))) << x << ", " << y;
      ASSERT_EQ(swapped, Bits(uint32_t(uint16_t(lo)) << 16 | uint16_t(y))) << y << ", " << x;
      ASSERT_EQ(mem->LoWord(joined), x);
      ASSERT_EQ(mem->HiWord(joined), y);
      ASSERT_EQ(mem->LoWord(swapped), y);
      ASSERT_EQ(mem->HiWord(swapped), x);
    }
  }
}

TEST(Shifts, MatchLogicalShiftsForEveryCountAndPattern) {
  auto mem = New<clsZKMem>();
  const uint32_t patterns[] = {0, 1, 2, 3, 5, 256, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x12345678, 0x87654321,
                               0x55555555, 0xAAAAAAAA, 0x40000000, 0xC0000001, 0x0000FFFF, 0xFFFF0000};
  for (uint32_t p : patterns) {
    for (int32_t n = -3; n <= 33; ++n) {
      const uint32_t up = n <= 0 ? p : n >= 32 ? 0 : p << n;
      const uint32_t down = n <= 0 ? p : n >= 32 ? 0 : p >> n;
      EXPECT_EQ(mem->RShift(Bits(p), n), Bits(up)) << std::hex << p << " RShift " << std::dec << n;
      EXPECT_EQ(mem->LShift(Bits(p), n), Bits(down)) << std::hex << p << " LShift " << std::dec << n;
    }
  }
}

TEST(Words, LateBoundAndFromTheRootObject) {
  auto lib = New<clsZKRunTimeLib>();
  const Ref<clsZKMem> first = lib->GetObjMem();
  EXPECT_NE(first, lib->GetObjMem()) << "a new object on every read";
  std::vector<Argument> args{{u"lngBits", Variant(int16_t{4})}, {u"Expression", Variant(u"256")}};
  const Variant shifted = Invoke(*first, u"lshift", InvokeKind::kCall, args);
  EXPECT_EQ(shifted.type(), VarType::kLong);
  EXPECT_EQ(shifted.asLong(), 16);
  std::vector<Argument> halves{{u"", Variant(int32_t{-1})}, {u"", Variant(int32_t{0})}};
  EXPECT_EQ(Invoke(*first, u"DWord", InvokeKind::kCall, halves).asLong(), 65535);
}

}  // namespace
}  // namespace tsruntime
