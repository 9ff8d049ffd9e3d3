// clsZKArray: FindInArray, IsArrayNothing, RoundArrayCurrency, and the written-back
// arguments of a late-bound caller.
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

using testing::Words;

TEST(ArrayFind, ReportsTheIndexFoundOrWhereToInsert) {
  const struct { const char* what; const char* sorted; int32_t lower; String search; bool down;
                 int32_t mode; bool found; int32_t at; } cases[] = {
      {"below every element: the lower bound", "b d f", 0, u"a", false, 0, false, 0},
      {"above every element: the upper bound + 1", "b d f", 0, u"g", false, 0, false, 3},
      {"bounds from -1: the midpoint of -1 and 0 is 0", "b d f", -1, u"a", false, 0, false, -1},
      {"bounds from -1, found below the midpoint", "b d f", -1, u"b", false, 0, true, -1},
      {"descending, above every element", "f d b", 0, u"g", true, 0, false, 0},
      {"descending, below every element", "f d b", 0, u"a", true, 0, false, 3},
      {"binary compare: capitals sort first", "b d f", 0, u"D", false, 0, false, 0},
      {"text compare: D finds d", "b d f", 0, u"D", false, 1, true, 1}};
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    int32_t at = 12345;
    const SafeArray a = SafeArray::FromStrings(Words(c.sorted), c.lower);
    EXPECT_EQ(ar->FindInArray(a, c.search, &at, c.down, c.mode), c.found) << c.what;
    EXPECT_EQ(at, c.at) << c.what;
  }
  const SafeArray t = testing::Table({{u"x", u"ab"}, {u"y", u"cd"}, {u"z", u"ef"}}, 1, 5);
  int32_t at = 0;
  EXPECT_TRUE(ar->FindInArray(t, u"ef", &at, false, 0, u"2") && at == 7) << "column 2, at " << at;
  for (const auto& [array, column] : {std::pair{SafeArray::FromStrings({}), Variant::Missing()},
                                      std::pair{t, Variant(3)}}) {
    testing::ExpectRuntimeError([&] { ar->FindInArray(array, u"a", &at, false, 0, column); },
                                RuntimeError::kSubscriptOutOfRange, "nothing to search");
  }
  // Every element of a long sorted array is found where it is, and every gap placed after it.
  std::vector<String> even;
  for (int i = 0; i < 1000; ++i) even.push_back(FromAscii(std::to_string(100000 + 2 * i)));
  const SafeArray a = SafeArray::FromStrings(even, 1);
  for (int i = 0; i < 1000; ++i) {
    int32_t gap = 0;
    ASSERT_TRUE(ar->FindInArray(a, even[i], &at) && at == i + 1) << i << " at " << at;
    ASSERT_FALSE(ar->FindInArray(a, FromAscii(std::to_string(100001 + 2 * i)), &gap)) << i;
    ASSERT_EQ(gap, i + 2) << "the gap after element " << i;
  }
}

TEST(ArrayNothing, IsTrueForAnythingWithoutElements) {
  auto ar = New<clsZKArray>();
  EXPECT_TRUE(ar->IsArrayNothing(u"abc")) << "not an array";
  EXPECT_TRUE(ar->IsArrayNothing(SafeArray(VarType::kString))) << "never dimensioned";
  EXPECT_TRUE(ar->IsArrayNothing(SafeArray(VarType::kString, {Bounds{5, 4}}))) << "5 to 4";
  EXPECT_FALSE(ar->IsArrayNothing(SafeArray(VarType::kString, {Bounds{1, 1}, Bounds{0, -1}})))
      << "only the first dimension counts";
}

// Amounts written as in the host language, separated by spaces, from index `lower`.
SafeArray Amounts(const std::string& text, int32_t lower = 0) {
  std::vector<Variant> amounts;
  for (const String& word : Words(text)) amounts.push_back(testing::Amount(ToUtf8(word)));
  SafeArray a(VarType::kCurrency, {Bounds{lower, lower + int32_t(amounts.size()) - 1}});
  for (int32_t i = 0; i < int32_t(amounts.size()); ++i) a.set(lower + i, amounts[i]);
  return a;
}

TEST(ArrayRoundCurrency, RoundsToKopecksThatAddUpToTheRoundedTotalOrReturnsFalse) {
  const Variant none, first(0), list(SafeArray::FromVariants({0, int16_t{2}}));
  const struct { const char* what; const char* amounts; const Variant& keep; const char* rounded;
                 int32_t lower = 0; } cases[] = {
      {"half a kopeck rounds away from zero", "0.005 -0.015", none, "0.01 -0.02"},
      {"30.015 is 30.02: the first gives one back", "10.005 10.005 10.005", none,
       "10.00 10.01 10.01"},
      {"negative halves: the first takes one back", "-0.005 -0.005", none, "0.00 -0.01"},
      {"the one rounded down most gets it", "0.3333 0.3333 0.3334", none, "0.33 0.33 0.34"},
      {"a kept amount is copied as it is", "1.2345 2.005 3.005", first, "1.2345 2.00 3.01"},
      {"kept indexes in an array", "0.005 0.005 0.005 0.005", list, "0.005 0.00 0.005 0.01"},
      {"bounds from 5, index 6 kept", "1.111 2.222 3.333", Variant(6), "1.11 2.222 3.33", 5},
      {"an empty array", "", none, ""}};
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    SafeArray rounded(VarType::kCurrency);
    ASSERT_TRUE(ar->RoundArrayCurrency(Amounts(c.amounts, c.lower), rounded, c.keep)) << c.what;
    EXPECT_EQ(rounded, Amounts(c.rounded, c.lower)) << c.what;
  }
  std::mt19937_64 rng(3);
  for (int round = 0; round < 300; ++round) {
    SafeArray amounts(VarType::kCurrency, {Bounds{0, static_cast<int32_t>(rng() % 40)}}), rounded;
    for (int32_t i = 0; i <= amounts.ubound(); ++i) {
      amounts.set(i, Currency::FromRaw(static_cast<int64_t>(rng() % 20000001) - 10000000));
    }
    ASSERT_TRUE(ar->RoundArrayCurrency(amounts, rounded, none));
    int64_t exact = 0, total = 0;
    for (int32_t i = 0; i <= amounts.ubound(); ++i) {
      const auto before = amounts.get(i).asCurrency().raw, after = rounded.get(i).asCurrency().raw;
      ASSERT_TRUE(after % 100 == 0 && std::abs(after - before) < 100) << round << ", index " << i;
      exact += before;
      total += after;
    }
    EXPECT_EQ(total, (exact + (exact >= 0 ? 50 : -50)) / 100 * 100) << "round " << round;
  }
  // Bad input gives False and leaves the result alone.
  std::vector<Variant> top_and_crumbs(11, Currency::FromRaw(6));
  top_and_crumbs[0] = Currency::FromRaw(INT64_MAX);  // the total needs one more kopeck
  const struct { const char* what; SafeArray amounts; Variant keep; } bad[] = {
      {"a never-dimensioned array", SafeArray(VarType::kCurrency), none},
      {"an amount that is not a number", SafeArray::FromVariants({u"1,5x"}), none},
      {"a bad index in an array", Amounts("1.00"), SafeArray::FromVariants({0, -1})},
      {"a result beyond the Currency range", SafeArray::FromVariants(top_and_crumbs), none}};
  for (const auto& c : bad) {
    SafeArray rounded = Amounts("7.77");
    EXPECT_FALSE(ar->RoundArrayCurrency(c.amounts, rounded, c.keep)) << c.what;
    EXPECT_EQ(rounded, Amounts("7.77")) << c.what;
  }
}

TEST(ArrayByName, WritesSortedArraysRowIndexesAndRoundedAmountsBack) {
  Ref<Object> ar = CreateObject(u"TSRuntimeLib.clsZKArray");
  std::vector<Argument> args{{u"", SafeArray::FromStrings(Words("b A a B"))},
                             {u"ComareMethod", vbTextCompare}};
  EXPECT_EQ(testing::Call(ar, u"SortBubble", args), Variant(true));
  EXPECT_EQ(args[0].value.asArray().ToStrings(), Words("a A b B"));
  args = {{u"", SafeArray::FromStrings(Words("a c"))}, {u"", u"b"}, {u"RowIndexBuf", int16_t{7}}};
  EXPECT_EQ(testing::Call(ar, u"FindInArray", args), Variant(false));
  EXPECT_EQ(args[2].value, Variant(1));
  args = {{u"", Amounts("0.125 0.125")}, {u"", SafeArray(VarType::kCurrency)}, {u"", Variant()}};
  EXPECT_EQ(testing::Call(ar, u"RoundArrayCurrency", args), Variant(true));
  EXPECT_EQ(args[1].value.asArray(), Amounts("0.12 0.13"));
}

}  // namespace
}  // namespace tsruntime
