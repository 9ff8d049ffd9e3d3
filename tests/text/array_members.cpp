// clsZKArray: FindInArray, IsArrayNothing, RoundArrayCurrency, the three sorts (where
// equal keys end up, order and permutation in every mode, their own error numbers) and the
// written-back arguments of a late-bound caller.
#include <algorithm>
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

using testing::Column;
using testing::Table;
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
  testing::ExpectRuntimeError([&] { ar->FindInArray(t, u"a", &at, false, 0, 3); },
                              RuntimeError::kSubscriptOutOfRange, "no column 3");
  // Every element of a long sorted array is found where it is, and every gap placed after it.
  std::vector<String> even;
  for (int i = 0; i < 1000; ++i) even.push_back(FromAscii(std::to_string(100000 + 2 * i)));
  const SafeArray a = SafeArray::FromStrings(even, 1);
  for (int i = 0; i < 2000; ++i) {  // 100000 + i is element i / 2 + 1, or goes after it
    ASSERT_EQ(ar->FindInArray(a, FromAscii(std::to_string(100000 + i)), &at), i % 2 == 0) << i;
    ASSERT_EQ(at, i / 2 + 1 + i % 2) << i;
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

// The kopecks each amount rounds to add up to the rounded total: the difference goes to
// the amounts rounded furthest, the first one first.
TEST(ArrayRoundCurrency, RoundsToKopecksThatAddUpToTheRoundedTotalOrReturnsFalse) {
  const Variant none, first(0), list(SafeArray::FromVariants({0, int16_t{2}}));
  const struct { const char* what; const char* amounts; const Variant& keep; const char* rounded;
                 int32_t lower = 0; } cases[] = {
      {"half a kopeck rounds away from zero", "0.005 -0.015", none, "0.01 -0.02"},
      {"30.015 is 30.02: the first gives one back", "10.005 10.005 10.005", none, "10.00 10.01 10.01"},
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

enum Sort { kBubble, kSelection, kQuick };
const char* const kNames[] = {"SortBubble", "SortSelection", "SortQuick"};
const int32_t kCodes[] = {xcZKERR_ARRAY_SORTBUBBLE, xcZKERR_ARRAY_SORTSEL, xcZKERR_ARRAY_SORTQUICK};

// Sorts rows (or elements) `lo` to `hi` of `a`; SortBubble always sorts them all.
bool SortRows(Sort sort, SafeArray& a, int32_t lo, int32_t hi, const Variant& column,
              bool hi_to_low = false, int32_t mode = vbBinaryCompare) {
  auto ar = New<clsZKArray>();
  if (sort == kBubble) return ar->SortBubble(a, column, hi_to_low, mode);
  if (sort == kQuick) return ar->SortQuick(a, lo, hi, column, hi_to_low, mode);
  return ar->SortSelection(a, lo, hi, column, hi_to_low, mode);
}

TEST(ArraySort, EqualKeysEndWhereTheStepsLeaveThem) {
  // Rows of (tag, key, tag) from row 1, sorted on column 2: the key is the tag's letter.
  const struct { const char* what; Sort sort; bool down; const char *tags, *after; } cases[] = {
      {"selection swaps b1 behind b2", kSelection, false, "b1 a1 b2 a2 c1", "a1 a2 b2 b1 c1"},
      {"selection descending", kSelection, true, "b1 a1 b2 a2 c1", "c1 b2 b1 a2 a1"},
      {"bubble keeps these in order", kBubble, false, "b1 a1 b2 a2 c1", "a1 a2 b1 b2 c1"},
      {"bubble descending", kBubble, true, "b1 a1 b2 a2 c1", "c1 b1 b2 a1 a2"},
      {"bubble's gap 2 pass reverses the a's", kBubble, false, "b1 a1 a2 b2", "a2 a1 b1 b2"},
      {"bubble descending over four", kBubble, true, "b1 a1 a2 b2", "b1 b2 a2 a1"}};
  for (const auto& c : cases) {
    std::vector<std::vector<String>> rows;
    for (const String& tag : Words(c.tags)) rows.push_back({tag, tag.substr(0, 1), tag});
    SafeArray t = Table(rows, 1, 1);
    EXPECT_TRUE(SortRows(c.sort, t, 1, t.ubound(2), 2, c.down)) << c.what;
    EXPECT_EQ(Column(t, 1), Words(c.after)) << c.what;
    EXPECT_EQ(Column(t, 3), Words(c.after)) << c.what << ": rows must move whole";
  }
}

// `n` rows of (a key with many repeats and case variants, row number, key#row number).
SafeArray RandomTable(int n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<std::vector<String>> rows;
  for (int i = 0; i < n; ++i) {
    String key, id = FromAscii(std::to_string(i));
    for (int k = rng() % 4; k > 0; --k) key += u"aAbBёЁежя "[rng() % 10];
    rows.push_back({key, id, key + u"#" + id});
  }
  return Table(rows);
}

// SortBubble's steps taken literally on rows of (key, tag): the tags in the order the
// rows must end in.
std::vector<String> BubbleSteps(const std::vector<String>& keys, std::vector<String> tags,
                                bool down, int32_t mode) {
  std::vector<std::pair<String, String>> rows;
  for (size_t i = 0; i < keys.size(); ++i) rows.emplace_back(keys[i], tags[i]);
  const int64_t n = static_cast<int64_t>(rows.size());
  for (int64_t gap = n / 2; gap >= 1; gap /= 2) {
    for (int64_t i = gap; i < n; ++i) {
      for (int64_t j = i - gap; j >= 0; j -= gap) {
        if (CompareStrings(rows[j].first, rows[j + gap].first, mode) * (down ? -1 : 1) < 1) break;
        std::swap(rows[j], rows[j + gap]);
      }
    }
  }
  for (size_t i = 0; i < rows.size(); ++i) tags[i] = rows[i].second;
  return tags;
}

TEST(ArraySort, EveryModeOrdersAndPermutesTablesAndListsAndBubbleFollowsItsSteps) {
  ScopedLocale ru("ru_RU");
  const SafeArray original = RandomTable(1500, 11);
  const std::vector<String> keys = Column(original, 0), rows = Column(original, 2);
  for (int run = 0; run < 12; ++run) {
    const Sort sort = Sort(run / 4);
    const bool down = run & 1;
    const int32_t mode = run & 2 ? vbTextCompare : vbBinaryCompare;
    auto before = [&](auto& a, auto& b) { return CompareStrings(a, b, mode) * (1 - 2 * down) < 0; };
    SCOPED_TRACE(std::string(kNames[sort]) + ", run " + std::to_string(run));
    SafeArray table = original, list = SafeArray::FromStrings(keys, 3);
    ASSERT_TRUE(SortRows(sort, table, 0, 1499, 0, down, mode));
    ASSERT_TRUE(SortRows(sort, list, 3, 1502, Variant::Missing(), down, mode));
    const auto sorted_keys = Column(table, 0), ids = Column(table, 1), whole = Column(table, 2);
    EXPECT_TRUE(std::is_sorted(sorted_keys.begin(), sorted_keys.end(), before));
    EXPECT_TRUE(std::is_permutation(whole.begin(), whole.end(), rows.begin()));
    for (size_t r = 0; r < whole.size(); ++r) {
      ASSERT_EQ(whole[r], sorted_keys[r] + u"#" + ids[r]) << "row " << r << " split";
    }
    if (sort == kBubble) {
      EXPECT_EQ(whole, BubbleSteps(keys, rows, down, mode));
    }
    const std::vector<String> items = list.ToStrings();
    EXPECT_TRUE(std::is_sorted(items.begin(), items.end(), before)) << "list";
    EXPECT_TRUE(std::is_permutation(items.begin(), items.end(), keys.begin())) << "list";
    // Binary order compares every character, the fifth and beyond included.
    SafeArray longer = SafeArray::FromStrings(Words("abcdz abcdzy abcd abcdy"));
    ASSERT_TRUE(SortRows(sort, longer, 0, 3, Variant::Missing(), down));
    EXPECT_EQ(longer.ToStrings(), Words(down ? "abcdzy abcdz abcdy abcd" : "abcd abcdy abcdz abcdzy"));
  }
}

TEST(ArraySort, QuickBelowTwentyOneRowsIsSelectionAndCopesWithEqualKeys) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    SafeArray quick = RandomTable(30, seed), selection = quick;
    const int32_t lo = seed % 10, hi = lo + seed % 20, mode = seed % 3 ? 0 : vbTextCompare;
    ASSERT_TRUE(SortRows(kQuick, quick, lo, hi, 0, seed % 2, mode));
    ASSERT_TRUE(SortRows(kSelection, selection, lo, hi, 0, seed % 2, mode));
    EXPECT_EQ(quick, selection) << "seed " << seed << ", rows " << lo << " to " << hi;
  }
  SafeArray same = SafeArray::FromStrings(std::vector<String>(5000, u"x"));
  same.set(4000, u"a");  // every partition as lopsided as it gets
  ASSERT_TRUE(SortRows(kQuick, same, 0, 4999, Variant::Missing()));
  EXPECT_TRUE(same.get(0) == u"a" && same.get(4999) == u"x");
  SafeArray never(VarType::kString), one = SafeArray::FromStrings({u"only"});
  EXPECT_TRUE(SortRows(kQuick, never, 9, 2, u"not a column")) << "fewer than two rows";
  EXPECT_TRUE(SortRows(kBubble, one, 0, 0, Variant::Missing()) && one.get(0) == u"only");
}

TEST(ArraySort, ErrorsAreRaisedAgainUnderTheSortsOwnNumbers) {
  using E = RuntimeError;
  const Variant none = Variant::Missing();
  const struct { const char* what; Sort sort; SafeArray array; Variant col; E cause; } cases[] = {
      {"never dimensioned", kBubble, SafeArray(VarType::kString), none, E::kSubscriptOutOfRange},
      {"a column not a number", kSelection, Table({{u"c"}, {u"b"}}), u"key", E::kTypeMismatch},
      {"a Null element", kQuick, SafeArray::FromVariants({u"b", Variant::Null()}), none, E::kInvalidUseOfNull}};
  for (const auto& c : cases) {
    SafeArray a = c.array;
    testing::ExpectError([&] { SortRows(c.sort, a, 0, 1, c.col); }, kCodes[c.sort],
                         u"ZKRuntimeLib.clsZKArray." + FromAscii(kNames[c.sort]),
                         RuntimeErrorText(static_cast<int32_t>(c.cause)), c.what);
    EXPECT_EQ(a, c.array) << c.what << ": the array must be left as it was";
  }
}

}  // namespace
}  // namespace tsruntime
