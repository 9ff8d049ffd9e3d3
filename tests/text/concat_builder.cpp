// clsZKStringConcat: the block counters hosts see, the text, and the runtime errors.
#include <climits>
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/clsZKStringConcat.h"

namespace tsruntime {
namespace {

// What a host does to the builder: '+' adds n characters, 'A' sets AllocSize to n, 'C' clears.
struct Step {
  char op;
  int32_t n = 0;
};

Ref<clsZKStringConcat> After(const std::vector<Step>& steps) {
  auto sc = New<clsZKStringConcat>();
  for (const Step& s : steps) {
    if (s.op == '+') sc->Add(String(static_cast<size_t>(s.n), u'x'));
    if (s.op == 'A') sc->LetAllocSize(s.n);
    if (s.op == 'C') sc->Clear();
  }
  return sc;
}

TEST(StringConcat, CountersMoveInWholeBlocksWithTheExtraBlock) {
  const struct { const char* what; std::vector<Step> steps; int32_t allocated, used; } cases[] = {
      {"a new object has nothing allocated", {}, 0, 0},
      {"the empty string allocates nothing", {{'+', 0}}, 0, 0},
      {"one character allocates one block", {{'+', 1}}, 1000, 1},
      {"filling the block exactly does not grow it", {{'+', 1}, {'+', 999}}, 1000, 1000},
      {"one character past the block grows one", {{'+', 1}, {'+', 999}, {'+', 1}}, 2000, 1001},
      {"AllocSize characters on a new object allocate two blocks", {{'+', 1000}}, 2000, 1000},
      {"an excess of 2.5 blocks grows three", {{'A', 10}, {'+', 25}}, 30, 25},
      {"a new block size applies at the next growth", {{'+', 1}, {'A', 10}, {'+', 1004}}, 1010,
       1005},
      {"Clear empties both counters", {{'+', 1500}, {'C'}}, 0, 0},
      {"Clear keeps the block size", {{'A', 10}, {'+', 5}, {'C'}, {'+', 1}}, 10, 1}};
  for (const auto& c : cases) {
    const auto sc = After(c.steps);
    EXPECT_EQ(sc->CharsAllocated(), c.allocated) << c.what;
    EXPECT_EQ(sc->CharsUsed(), c.used) << c.what;
    EXPECT_EQ(sc->GetStr(), String(static_cast<size_t>(c.used), u'x')) << c.what;
  }
}

TEST(StringConcat, RaisesTheHostRuntimesErrorsAndKeepsItsText) {
  const struct { const char* what; std::vector<Step> before; int32_t piece; RuntimeError error;
                 int32_t allocated_after; } cases[] = {
      {"AllocSize 0 on a new object", {{'A', 0}}, 1, RuntimeError::kDivisionByZero, 0},
      {"AllocSize 0 once the spare space is used", {{'+', 10}, {'A', 0}, {'+', 990}}, 1,
       RuntimeError::kDivisionByZero, 1000},
      {"a negative block, a negative growth", {{'A', -5}}, 1, RuntimeError::kInvalidCall, 0},
      {"a negative block, a growth too short", {{'A', -1}}, 3, RuntimeError::kInvalidCall, 2},
      {"an allocation beyond 32 bits", {{'A', 10}, {'+', 10}, {'A', INT_MAX - 5}}, 11,
       RuntimeError::kOverflow, 20}};
  for (const auto& c : cases) {
    const auto sc = After(c.before);
    const String before = sc->GetStr();
    testing::ExpectRuntimeError([&] { sc->Add(String(static_cast<size_t>(c.piece), u'y')); },
                                c.error, c.what);
    EXPECT_EQ(sc->GetStr(), before) << c.what;
    EXPECT_EQ(sc->CharsAllocated(), c.allocated_after) << c.what;
  }
}

TEST(StringConcat, TextIsThePiecesInOrderWithTrailingSpacesKept) {
  std::mt19937 rng(7);
  auto sc = New<clsZKStringConcat>();
  sc->Add(u"Итого: ");
  sc->Add(u"12 руб.  ");
  EXPECT_EQ(sc->GetStr(), u"Итого: 12 руб.  ");
  sc->LetAllocSize(37);
  String expected = sc->GetStr();
  for (int i = 0; i < 20000; ++i) {
    const String piece(rng() % 50, static_cast<char16_t>(u'а' + rng() % 32));
    sc->Add(piece);
    expected += piece;
  }
  EXPECT_EQ(sc->GetStr(), expected);
}

TEST(StringConcat, AddsAndCountsByName) {
  Ref<Object> sc = CreateObject(u"TSRuntimeLib.clsZKStringConcat");
  std::vector<Argument> size{{u"", int32_t{4}}}, piece{{u"strAddString", u"hello"}}, none;
  Invoke(*sc, u"AllocSize", InvokeKind::kLet, size);
  testing::Call(sc, u"Add", piece);
  EXPECT_EQ(piece[0].value, Variant(u"hello")) << "the piece is not changed";
  EXPECT_EQ(testing::Call(sc, u"CharsAllocated", none), Variant(int32_t{8}));
  EXPECT_EQ(testing::Call(sc, u"GetStr", none), Variant(u"hello"));
  testing::Call(sc, u"Clear", none);
  EXPECT_EQ(testing::Call(sc, u"CharsUsed", none), Variant(int32_t{0}));
  EXPECT_EQ(testing::Call(sc, u"AllocSize", none), Variant(int32_t{4}));
}

}  // namespace
}  // namespace tsruntime
