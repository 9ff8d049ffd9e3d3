// clsZKMem's words and shifts: the defined examples, then sweeps against plain 32-bit
// arithmetic as the model.
#include <gtest/gtest.h>

#include <cstdint>

#include "tsruntime/clsZKMem.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

constexpr int32_t Bits(uint32_t pattern) { return static_cast<int32_t>(pattern); }

TEST(Words, SplitAndJoinAsDefined) {
  auto mem = New<clsZKMem>();
  struct Row {
    const char* what;
    int32_t got, expected;
  } rows[] = {
      {"HiWord of -1 is -1", mem->HiWord(-1), -1},
      {"HiWord of 0x12345678 is 0x1234", mem->HiWord(0x12345678), 0x1234},
      {"HiWord keeps the sign of the high half", mem->HiWord(Bits(0x80000000)), -32768},
      {"LoWord of 0x0000FFFF is -1", mem->LoWord(0xFFFF), -1},
      {"LoWord of 0x12345678 is 0x5678", mem->LoWord(0x12345678), 0x5678},
      {"LoWord sign-extends bit 15", mem->LoWord(0x8000), -32768},
      {"DWord(-1, 0) is 65535: the low half is not sign-extended", mem->DWord(-1, 0), 65535},
      {"DWord(0, -1) is 0xFFFF0000", mem->DWord(0, -1), Bits(0xFFFF0000)},
      {"DWord(0x5678, 0x1234) is 0x12345678", mem->DWord(0x5678, 0x1234), 0x12345678},
  };
  for (const Row& r : rows) EXPECT_EQ(r.got, r.expected) << r.what;
}

TEST(Words, HiAndLoWordOfADWordGiveBackBothHalves) {
  auto mem = New<clsZKMem>();
  const int16_t samples[] = {0, 1, -1, 0x7FFF, -32768, 0x1234, -2, 0x00FF, -256};
  for (int32_t x = INT16_MIN; x <= INT16_MAX; ++x) {
    for (int16_t y : samples) {
      const int32_t low_first = mem->DWord(static_cast<int16_t>(x), y);
      const int32_t high_first = mem->DWord(y, static_cast<int16_t>(x));
      ASSERT_EQ(mem->LoWord(low_first), x) << x << ", " << y;
      ASSERT_EQ(mem->HiWord(low_first), y) << x << ", " << y;
      ASSERT_EQ(mem->LoWord(high_first), y) << y << ", " << x;
      ASSERT_EQ(mem->HiWord(high_first), x) << y << ", " << x;
    }
  }
}

TEST(Shifts, RShiftMovesBitsUpAndLShiftDownAsDefined) {
  auto mem = New<clsZKMem>();
  struct Row {
    const char* what;
    int32_t got, expected;
  } rows[] = {
      {"RShift(1, 31) lands on the sign", mem->RShift(1, 31), INT32_MIN},
      {"RShift(1, 32) is 0", mem->RShift(1, 32), 0},
      {"RShift(5, 0) is 5", mem->RShift(5, 0), 5},
      {"RShift(5, -3) is 5", mem->RShift(5, -3), 5},
      {"LShift(0x80000000, 31) is 1", mem->LShift(INT32_MIN, 31), 1},
      {"LShift(-1, 32) is 0", mem->LShift(-1, 32), 0},
      {"LShift(256, 4) is 16", mem->LShift(256, 4), 16},
      {"LShift(-1, 1) fills zeros from the top", mem->LShift(-1, 1), INT32_MAX},
  };
  for (const Row& r : rows) EXPECT_EQ(r.got, r.expected) << r.what;
}

TEST(Shifts, MatchLogicalShiftsForEveryCountAndPattern) {
  auto mem = New<clsZKMem>();
  const uint32_t patterns[] = {0,          1,          2,          3,          0x7FFFFFFF,
                               0x80000000, 0xFFFFFFFF, 0x12345678, 0x87654321, 0x55555555,
                               0xAAAAAAAA, 0x40000000, 0xC0000001, 0x0000FFFF, 0xFFFF0000};
  for (uint32_t p : patterns) {
    for (int32_t n = -1; n <= 33; ++n) {
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
