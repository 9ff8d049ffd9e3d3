// clsZKStringConcat: the block counters hosts see, the text, and the runtime errors.
#include <climits>
#include <sstream>

#include "text/text_test_util.h"
#include "tsruntime/clsZKStringConcat.h"

namespace tsruntime {
namespace {

// A builder after `steps`: "+n" adds n characters, "An" sets AllocSize to n, "C" clears.
// Pieces differ in their letter; `text` receives what the builder must hold.
Ref<clsZKStringConcat> After(const std::string& steps, String* text = nullptr) {
  auto sc = New<clsZKStringConcat>();
  std::istringstream in(steps);
  String expected;
  for (std::string step; in >> step;) {
    const auto letter = static_cast<char16_t>(u'а' + expected.size() % 32);
    const String piece = step[0] == '+' ? String(std::stoul(step.substr(1)), letter) : u"";
    if (step[0] == '+') sc->Add(piece), expected += piece;
    if (step[0] == 'A') sc->LetAllocSize(std::stoi(step.substr(1)));
    if (step[0] == 'C') sc->Clear(), expected.clear();
  }
  if (text) *text = expected;
  return sc;
}

TEST(StringConcat, CountersMoveInWholeBlocksWithTheExtraBlock) {
  const struct { const char* what; const char* steps; int32_t allocated, used; } cases[] = {
      {"the empty string allocates nothing", "+0", 0, 0},
      {"one character allocates one block", "+1", 1000, 1},
      {"filling the block exactly does not grow it", "+1 +999", 1000, 1000},
      {"one character past the block grows one", "+1 +999 +1", 2000, 1001},
      {"AllocSize characters on a new object allocate two blocks", "+1000", 2000, 1000},
      {"an excess of 2.5 blocks grows three", "A10 +25", 30, 25},
      {"a new block size applies at the next growth", "+1 A10 +1004", 1010, 1005},
      {"many pieces across many blocks", "A7 +3 +40 +1 +13 +7 +0 +29 +2 +50 +1", 147, 146},
      {"Clear empties both counters", "+1500 C", 0, 0},
      {"Clear keeps the block size", "A10 +5 C +1", 10, 1}};
  for (const auto& c : cases) {
    String text;
    const auto sc = After(c.steps, &text);
    EXPECT_EQ(sc->CharsAllocated(), c.allocated) << c.what;
    EXPECT_EQ(sc->CharsUsed(), c.used) << c.what;
    EXPECT_EQ(sc->GetStr(), text) << c.what;
  }
  const auto sc = After("+3");
  sc->Add(u"Итого:  ");
  EXPECT_EQ(sc->GetStr(), u"ааа" u"Итого:  ") << "trailing blanks are text, not padding";
}

TEST(StringConcat, RaisesTheHostRuntimesErrorsAndKeepsItsText) {
  const std::string near_max = "A" + std::to_string(INT_MAX - 5);
  const struct { const char* what; std::string before; size_t piece; RuntimeError error;
                 int32_t allocated_after; } cases[] = {
      {"AllocSize 0 once the spare space is used", "+10 A0 +990", 1, RuntimeError::kDivisionByZero, 1000},
      {"a negative block, a growth too short", "A-1", 3, RuntimeError::kInvalidCall, 2},
      {"an allocation beyond 32 bits", "A10 +10 " + near_max, 11, RuntimeError::kOverflow, 20}};
  for (const auto& c : cases) {
    const auto sc = After(c.before);
    const String before = sc->GetStr();
    testing::ExpectRuntimeError([&] { sc->Add(String(c.piece, u'y')); }, c.error, c.what);
    EXPECT_EQ(sc->GetStr(), before) << c.what;
    EXPECT_EQ(sc->CharsAllocated(), c.allocated_after) << c.what;
  }
}

}  // namespace
}  // namespace tsruntime
