// clsZKStringConcat: the block counters hosts see, the text, and the runtime errors.
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "tsruntime/clsZKStringConcat.h"

namespace tsruntime {
namespace {

// One thing a host does to the builder.
struct Step {
  enum Kind { kAdd, kAllocSize, kClear } kind;
  int32_t n = 0;  // characters to add, or the new AllocSize
};
Step Add(int32_t n) { return {Step::kAdd, n}; }
Step Alloc(int32_t n) { return {Step::kAllocSize, n}; }
Step Clear() { return {Step::kClear}; }

void Apply(clsZKStringConcat& sc, const Step& step) {
  switch (step.kind) {
    case Step::kAdd:
      sc.Add(String(static_cast<size_t>(step.n), u'x'));
      break;
    case Step::kAllocSize:
      sc.LetAllocSize(step.n);
      break;
    case Step::kClear:
      sc.Clear();
      break;
  }
}

struct CounterCase {
  const char* what;
  std::vector<Step> steps;
  int32_t allocated;
  int32_t used;
};

TEST(StringConcatCounters, MoveInWholeBlocksWithTheExtraBlock) {
  const CounterCase cases[] = {
      {"a new object has nothing allocated", {}, 0, 0},
      {"adding the empty string to a new object allocates nothing", {Add(0)}, 0, 0},
      {"one character allocates one block", {Add(1)}, 1000, 1},
      {"filling the block exactly does not grow it", {Add(1), Add(999)}, 1000, 1000},
      {"one character past the block grows one block", {Add(1), Add(999), Add(1)}, 2000, 1001},
      {"exactly AllocSize characters on a new object allocate two blocks", {Add(1000)}, 2000,
       1000},
      {"an excess of exactly one block grows two", {Add(1000), Add(1000), Add(1000)}, 4000,
       3000},
      {"an excess of 2.5 blocks grows three", {Alloc(10), Add(25)}, 30, 25},
      {"the empty string adds nothing to a used buffer", {Add(5), Add(0)}, 1000, 5},
      {"a changed block size applies at the next growth", {Add(1), Alloc(10), Add(999), Add(5)},
       1010, 1005},
      {"Clear empties both counters", {Add(1500), Clear()}, 0, 0},
      {"Clear keeps the block size", {Alloc(10), Add(5), Clear(), Add(1)}, 10, 1},
      {"a block size of 1 grows by the excess plus one", {Alloc(1), Add(3), Add(3)}, 7, 6},
  };
  for (const CounterCase& c : cases) {
    auto sc = New<clsZKStringConcat>();
    for (const Step& s : c.steps) Apply(*sc, s);
    EXPECT_EQ(sc->CharsAllocated(), c.allocated) << c.what;
    EXPECT_EQ(sc->CharsUsed(), c.used) << c.what;
    EXPECT_EQ(sc->GetStr().size(), static_cast<size_t>(c.used)) << c.what;
  }
}

struct ErrorCase {
  const char* what;
  std::vector<Step> before;
  int32_t piece;
  RuntimeError error;
  int32_t allocated_after;
};

TEST(StringConcatCounters, RaiseTheHostRuntimesErrors) {
  const ErrorCase cases[] = {
      {"AllocSize 0 on a new object", {Alloc(0)}, 1, RuntimeError::kDivisionByZero, 0},
      {"AllocSize 0 once the spare space is used up", {Add(10), Alloc(0), Add(990)}, 1,
       RuntimeError::kDivisionByZero, 1000},
      {"a negative block gives a negative growth", {Alloc(-5)}, 1, RuntimeError::kInvalidCall,
       0},
      {"a negative block gives a growth too short for the piece", {Alloc(-1)}, 3,
       RuntimeError::kInvalidCall, 2},
      {"the allocation would leave 32 bits", {Alloc(10), Add(10), Alloc(INT_MAX - 5)}, 11,
       RuntimeError::kOverflow, 20},
  };
  for (const ErrorCase& c : cases) {
    auto sc = New<clsZKStringConcat>();
    for (const Step& s : c.before) Apply(*sc, s);
    const int32_t used = sc->CharsUsed();
    try {
      sc->Add(String(static_cast<size_t>(c.piece), u'y'));
      ADD_FAILURE() << c.what << ": no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), static_cast<int32_t>(c.error)) << c.what;
    }
    EXPECT_EQ(sc->CharsUsed(), used) << c.what << ": text must not change";
    EXPECT_EQ(sc->CharsAllocated(), c.allocated_after) << c.what;
  }
}

TEST(StringConcatText, IsThePiecesInOrderWithTrailingSpacesKept) {
  auto sc = New<clsZKStringConcat>();
  EXPECT_EQ(sc->GetStr(), u"");
  sc->Add(u"Итого: ");
  sc->Add(u"");
  sc->Add(u"12 руб.  ");
  EXPECT_EQ(sc->GetStr(), u"Итого: 12 руб.  ");
  sc->Add(u"\r\n");  // adding goes on after GetStr
  EXPECT_EQ(sc->GetStr(), u"Итого: 12 руб.  \r\n");
  sc->Clear();
  EXPECT_EQ(sc->GetStr(), u"");
}

TEST(StringConcatText, MatchesPlainAppendingOverManyRandomPieces) {
  std::mt19937 rng(7);
  auto sc = New<clsZKStringConcat>();
  sc->LetAllocSize(37);
  String expected;
  for (int i = 0; i < 20000; ++i) {
    String piece(rng() % 50, static_cast<char16_t>(u'а' + rng() % 32));
    sc->Add(piece);
    expected += piece;
    ASSERT_GE(sc->CharsAllocated(), sc->CharsUsed()) << "after piece " << i;
  }
  EXPECT_EQ(sc->GetStr(), expected);
  EXPECT_EQ(sc->CharsUsed(), static_cast<int32_t>(expected.size()));
}

TEST(StringConcatLateBound, AddsAndCountsByName) {
  Ref<Object> sc = CreateObject(u"TSRuntimeLib.clsZKStringConcat");
  std::vector<Argument> size{{u"", Variant(int32_t{4})}};
  Invoke(*sc, u"AllocSize", InvokeKind::kLet, size);
  std::vector<Argument> piece{{u"strAddString", Variant(u"hello")}};
  Invoke(*sc, u"Add", InvokeKind::kCall, piece);
  EXPECT_EQ(piece[0].value, Variant(u"hello")) << "the piece is not changed";
  std::vector<Argument> none;
  EXPECT_EQ(Invoke(*sc, u"CharsAllocated", InvokeKind::kCall, none), Variant(int32_t{8}));
  EXPECT_EQ(Invoke(*sc, u"CharsUsed", InvokeKind::kCall, none), Variant(int32_t{5}));
  EXPECT_EQ(Invoke(*sc, u"GetStr", InvokeKind::kCall, none), Variant(u"hello"));
  Invoke(*sc, u"Clear", InvokeKind::kCall, none);
  EXPECT_EQ(Invoke(*sc, u"AllocSize", InvokeKind::kCall, none), Variant(int32_t{4}));
}

}  // namespace
}  // namespace tsruntime
