// clsZKArray: FindInArray, IsArrayNothing, RoundArrayCurrency, and the written-back
// arguments of a late-bound caller.
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

using testing::Amount;
using testing::Table;

TEST(ArrayFind, ReportsTheIndexFoundOrWhereToInsert) {
  const std::vector<String> up = {u"b", u"d", u"f"}, down = {u"f", u"d", u"b"};
  const struct {
    const char* what;
    const std::vector<String>& sorted;
    int32_t lower;
    String search;
    bool hi_to_low;
    int32_t mode;
    bool found;
    int32_t row_index;
  } cases[] = {
      {"below every element: the lower bound", up, 0, u"a", false, 0, false, 0},
      {"the first element", up, 0, u"b", false, 0, true, 0},
      {"the last element", up, 0, u"f", false, 0, true, 2},
      {"between the first two", up, 0, u"c", false, 0, false, 1},
      {"between the last two", up, 0, u"e", false, 0, false, 2},
      {"above every element: the upper bound + 1", up, 0, u"g", false, 0, false, 3},
      {"bounds from 10", up, 10, u"e", false, 0, false, 12},
      {"bounds from -1: the midpoint of -1 and 0 is 0", up, -1, u"a", false, 0, false, -1},
      {"bounds from -1, found below the midpoint", up, -1, u"b", false, 0, true, -1},
      {"bounds from -3, a miss", up, -3, u"c", false, 0, false, -2},
      {"descending, found", down, 0, u"b", true, 0, true, 2},
      {"descending, above every element", down, 0, u"g", true, 0, false, 0},
      {"descending, below every element", down, 0, u"a", true, 0, false, 3},
      {"binary compare: capitals sort first", up, 0, u"D", false, 0, false, 0},
      {"text compare: D finds d", up, 0, u"D", false, 1, true, 1},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    int32_t at = 12345;
    EXPECT_EQ(ar->FindInArray(SafeArray::FromStrings(c.sorted, c.lower), c.search, &at,
                              c.hi_to_low, c.mode), c.found) << c.what;
    EXPECT_EQ(at, c.row_index) << c.what;
  }
  const SafeArray t = Table({{u"x", u"ab"}, {u"y", u"cd"}, {u"z", u"ef"}, {u"w", u"gh"}}, 1, 5);
  int32_t at = 0;
  EXPECT_TRUE(ar->FindInArray(t, u"ef", &at, false, 0, Variant(int32_t{2})));
  EXPECT_EQ(at, 7) << "a table searched in column 2";
  EXPECT_FALSE(ar->FindInArray(t, u"ce", &at, false, 0, Variant(u"2")));
  EXPECT_EQ(at, 7) << "the column given as text";
}

TEST(ArrayFind, FindsEveryElementOfALargeArrayAndPlacesEveryGap) {
  std::vector<String> sorted;
  for (int i = 0; i < 1000; ++i) sorted.push_back(FromAscii(std::to_string(100000 + 2 * i)));
  const SafeArray a = SafeArray::FromStrings(sorted, 1);
  auto ar = New<clsZKArray>();
  for (int i = 0; i < 1000; ++i) {
    int32_t at = 0;
    ASSERT_TRUE(ar->FindInArray(a, sorted[i], &at)) << i;
    ASSERT_EQ(at, i + 1);
    ASSERT_FALSE(ar->FindInArray(a, FromAscii(std::to_string(100001 + 2 * i)), &at)) << i;
    ASSERT_EQ(at, i + 2) << "the gap after element " << i;
  }
}

TEST(ArrayFind, LetsSubscriptOutOfRangeThrough) {
  const struct {
    const char* what;
    SafeArray array;
    Variant column;
  } cases[] = {
      {"an empty array", SafeArray::FromStrings({}), Variant::Missing()},
      {"a never-dimensioned array", SafeArray(VarType::kString), Variant::Missing()},
      {"a list searched as a table", SafeArray::FromStrings({u"a"}), Variant(int32_t{0})},
      {"a column outside the table", Table({{u"a"}, {u"b"}}), Variant(int32_t{1})},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    testing::ExpectRuntimeError([&] { ar->FindInArray(c.array, u"a", nullptr, false, 0, c.column); },
                                RuntimeError::kSubscriptOutOfRange, c.what);
  }
}

TEST(ArrayNothing, IsTrueForAnythingWithoutElements) {
  const struct {
    const char* what;
    Variant value;
    bool nothing;
  } cases[] = {
      {"Empty", Variant(), true},
      {"a string", Variant(u"abc"), true},
      {"a never-dimensioned array", Variant(SafeArray(VarType::kString)), true},
      {"an array from 5 to 4", Variant(SafeArray(VarType::kString, {Bounds{5, 4}})), true},
      {"one element", Variant(SafeArray::FromStrings({u""})), false},
      {"a table with no rows but columns",
       Variant(SafeArray(VarType::kString, {Bounds{1, 2}, Bounds{0, -1}})), false},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) EXPECT_EQ(ar->IsArrayNothing(c.value), c.nothing) << c.what;
}

SafeArray Amounts(const std::vector<const char*>& texts, int32_t lower = 0) {
  SafeArray a(VarType::kCurrency, {Bounds{lower, lower + static_cast<int32_t>(texts.size()) - 1}});
  for (size_t i = 0; i < texts.size(); ++i) a.set(lower + static_cast<int32_t>(i), Variant(Amount(texts[i])));
  return a;
}

TEST(ArrayRoundCurrency, RoundsToKopecksThatAddUpToTheRoundedTotal) {
  const struct {
    const char* what;
    std::vector<const char*> amounts;
    Variant keep;
    std::vector<const char*> rounded;
    int32_t lower = 0;
  } cases[] = {
      {"each amount rounds on its own when the totals agree", {"1.004", "2.006", "-3.07"},
       Variant(), {"1.00", "2.01", "-3.07"}},
      {"half a kopeck rounds away from zero", {"0.005", "-0.015"}, Variant(), {"0.01", "-0.02"}},
      {"three halves: 30.015 rounds to 30.02, the first gives a kopeck back",
       {"10.005", "10.005", "10.005"}, Variant(), {"10.00", "10.01", "10.01"}},
      {"negative halves: the first takes a kopeck back", {"-0.005", "-0.005"}, Variant(),
       {"0.00", "-0.01"}},
      {"thirds: the one rounded down most gets the kopeck", {"0.3333", "0.3333", "0.3334"},
       Variant(), {"0.33", "0.33", "0.34"}},
      {"a kept amount is copied with its fraction", {"1.2345", "2.005", "3.005"},
       Variant(int32_t{0}), {"1.2345", "2.00", "3.01"}},
      {"kept indexes as an array", {"0.005", "0.005", "0.005", "0.005"},
       Variant(SafeArray::FromVariants({Variant(int32_t{0}), Variant(int16_t{2})})),
       {"0.005", "0.00", "0.005", "0.01"}},
      {"a kept index given as text", {"0.005", "0.005"}, Variant(u"1"), {"0.01", "0.005"}},
      {"Null keeps nothing", {"0.006"}, Variant::Null(), {"0.01"}},
      {"bounds from 5, index 6 kept", {"1.111", "2.222", "3.333"}, Variant(int32_t{6}),
       {"1.11", "2.222", "3.33"}, 5},
      {"an empty array", {}, Variant(), {}},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    SafeArray rounded(VarType::kCurrency);
    ASSERT_TRUE(ar->RoundArrayCurrency(Amounts(c.amounts, c.lower), rounded, c.keep)) << c.what;
    EXPECT_EQ(rounded, Amounts(c.rounded, c.lower)) << c.what;
  }
}

TEST(ArrayRoundCurrency, KeepsTheRoundedSumOverRandomAmounts) {
  std::mt19937_64 rng(3);
  auto ar = New<clsZKArray>();
  for (int round = 0; round < 300; ++round) {
    const int n = 1 + static_cast<int>(rng() % 40);
    SafeArray amounts(VarType::kCurrency, {Bounds{0, n - 1}});
    std::vector<Variant> kept;
    int64_t exact = 0, total = 0;
    for (int i = 0; i < n; ++i) {
      const int64_t raw = static_cast<int64_t>(rng() % 20000001) - 10000000;
      amounts.set(i, Variant(Currency::FromRaw(raw)));
      if (rng() % 5 == 0) kept.push_back(Variant(int32_t{i}));
    }
    SafeArray rounded;
    ASSERT_TRUE(ar->RoundArrayCurrency(amounts, rounded, Variant(SafeArray::FromVariants(kept))));
    for (int i = 0; i < n; ++i) {
      const int64_t before = amounts.get(i).asCurrency().raw, after = rounded.get(i).asCurrency().raw;
      if (std::find(kept.begin(), kept.end(), Variant(int32_t{i})) != kept.end()) {
        ASSERT_EQ(after, before) << "round " << round << ": kept index " << i << " changed";
        continue;
      }
      ASSERT_TRUE(after % 100 == 0 && std::llabs(after - before) < 100) << "round " << round << " at " << i;
      exact += before;
      total += after;
    }
    EXPECT_EQ(total, (exact + (exact >= 0 ? 50 : -50)) / 100 * 100) << "round " << round;
  }
}

TEST(ArrayRoundCurrency, ReturnsFalseAndLeavesTheResultAloneOnBadInput) {
  std::vector<Variant> top_and_crumbs{Variant(Currency::FromRaw(INT64_MAX))};
  top_and_crumbs.resize(11, Variant(Currency::FromRaw(6)));  // the total needs one more kopeck
  const struct {
    const char* what;
    SafeArray amounts;
    Variant keep;
  } cases[] = {
      {"a never-dimensioned array", SafeArray(VarType::kCurrency), Variant()},
      {"a table", SafeArray(VarType::kCurrency, {Bounds{0, 1}, Bounds{0, 1}}), Variant()},
      {"an amount that is not a number", SafeArray::FromVariants({Variant(u"1,5x")}), Variant()},
      {"an index past the end", Amounts({"1.00", "2.00"}), Variant(int32_t{2})},
      {"an index array holding a bad index", Amounts({"1.00"}),
       Variant(SafeArray::FromVariants({Variant(int32_t{0}), Variant(int32_t{-1})}))},
      {"an index that is an object", Amounts({"1.00"}), Variant::Nothing()},
      {"a correction beyond the Currency range", SafeArray::FromVariants(top_and_crumbs), Variant()},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    SafeArray rounded = Amounts({"7.77"});
    EXPECT_FALSE(ar->RoundArrayCurrency(c.amounts, rounded, c.keep)) << c.what;
    EXPECT_EQ(rounded, Amounts({"7.77"})) << c.what;
  }
}

TEST(ArrayByName, WritesSortedArraysRowIndexesAndRoundedAmountsBack) {
  Ref<Object> ar = CreateObject(u"TSRuntimeLib.clsZKArray");
  std::vector<Argument> args{{u"", Variant(SafeArray::FromStrings({u"b", u"A", u"a", u"B"}))},
                             {u"ComareMethod", Variant(int32_t{vbTextCompare})}};
  EXPECT_EQ(testing::Call(ar, u"SortBubble", args), Variant(true));
  EXPECT_EQ(args[0].value.asArray().ToStrings(), (std::vector<String>{u"a", u"A", u"b", u"B"}));
  args[1].name = u"CompareMethod";
  testing::ExpectRuntimeError([&] { testing::Call(ar, u"SortBubble", args); },
                              RuntimeError::kNamedArgumentNotFound, "SortBubble takes ComareMethod");
  args = {{u"", Variant(SafeArray::FromStrings({u"d", u"c", u"b", u"a"}))}, {u"", Variant(int32_t{1})},
          {u"", Variant(int32_t{3})}, {u"SortHiToLow", Variant(false)}};
  EXPECT_EQ(testing::Call(ar, u"SortQuick", args), Variant(true));
  EXPECT_EQ(args[0].value.asArray().ToStrings(), (std::vector<String>{u"d", u"a", u"b", u"c"}));
  args = {{u"", Variant(SafeArray::FromStrings({u"a", u"c"}))}, {u"", Variant(u"b")},
          {u"RowIndexBuf", Variant(int16_t{7})}};
  EXPECT_EQ(testing::Call(ar, u"FindInArray", args), Variant(false));
  EXPECT_EQ(args[2].value, Variant(int32_t{1}));
  args = {{u"", Variant(Amounts({"0.125", "0.125"}))}, {u"", Variant(SafeArray(VarType::kCurrency))},
          {u"", Variant()}};
  EXPECT_EQ(testing::Call(ar, u"RoundArrayCurrency", args), Variant(true));
  EXPECT_EQ(args[1].value.asArray(), Amounts({"0.12", "0.13"}));
}

}  // namespace
}  // namespace tsruntime
