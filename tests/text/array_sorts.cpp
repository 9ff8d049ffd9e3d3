// clsZKArray's three sorts: where equal keys end up, order and permutation in every
// mode, and the errors they raise under their own numbers.
#include <algorithm>
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

using testing::Column;
using testing::Table;

enum Sort { kBubble, kSelection, kQuick };
const char* const kNames[] = {"SortBubble", "SortSelection", "SortQuick"};

// Sorts every row (or element) of `a`.
bool SortAll(Sort sort, SafeArray& a, const Variant& column, bool hi_to_low, int32_t mode) {
  auto ar = New<clsZKArray>();
  const int dim = column.isMissing() ? 1 : 2;
  if (sort == kBubble) return ar->SortBubble(a, column, hi_to_low, mode);
  if (sort == kSelection) return ar->SortSelection(a, a.lbound(dim), a.ubound(dim), column, hi_to_low, mode);
  return ar->SortQuick(a, a.lbound(dim), a.ubound(dim), column, hi_to_low, mode);
}

TEST(ArraySort, EqualKeysEndWhereTheStepsLeaveThem) {
  // Rows of (tag, key, tag), columns and rows from 1, sorted on column 2.
  const std::vector<std::vector<String>> five = {{u"b1", u"b", u"b1"}, {u"a1", u"a", u"a1"},
      {u"b2", u"b", u"b2"}, {u"a2", u"a", u"a2"}, {u"c1", u"c", u"c1"}};
  const std::vector<std::vector<String>> four = {
      {u"b1", u"b", u"b1"}, {u"a1", u"a", u"a1"}, {u"a2", u"a", u"a2"}, {u"b2", u"b", u"b2"}};
  const struct {
    const char* what;
    Sort sort;
    bool hi_to_low;
    const std::vector<std::vector<String>>& rows;
    std::vector<String> tags_after;
  } cases[] = {
      {"selection swaps the first b behind the second", kSelection, false, five,
       {u"a1", u"a2", u"b2", u"b1", u"c1"}},
      {"selection descending", kSelection, true, five, {u"c1", u"b2", u"b1", u"a2", u"a1"}},
      {"bubble keeps these equal keys in order", kBubble, false, five,
       {u"a1", u"a2", u"b1", u"b2", u"c1"}},
      {"bubble descending", kBubble, true, five, {u"c1", u"b1", u"b2", u"a1", u"a2"}},
      {"bubble's gap 2 pass reverses the a's", kBubble, false, four, {u"a2", u"a1", u"b1", u"b2"}},
      {"bubble descending over four rows", kBubble, true, four, {u"b1", u"b2", u"a2", u"a1"}},
      {"quick on five rows is selection", kQuick, false, five, {u"a1", u"a2", u"b2", u"b1", u"c1"}},
  };
  for (const auto& c : cases) {
    SafeArray t = Table(c.rows, 1, 1);
    EXPECT_TRUE(SortAll(c.sort, t, Variant(int32_t{2}), c.hi_to_low, vbBinaryCompare)) << c.what;
    EXPECT_EQ(Column(t, 1), c.tags_after) << c.what;
    EXPECT_EQ(Column(t, 3), c.tags_after) << c.what << ": rows must move whole";
  }
  // Text compare makes case variants equal keys; each sort leaves them where its steps do.
  ScopedLocale ru("ru_RU");
  const std::vector<String> text_order[] = {{u"а", u"А", u"Б", u"б", u"В"},
                                            {u"а", u"А", u"б", u"Б", u"В"},
                                            {u"а", u"А", u"б", u"Б", u"В"}};
  for (Sort sort : {kBubble, kSelection, kQuick}) {
    for (int32_t mode : {vbTextCompare, vbDatabaseCompare}) {
      SafeArray a = SafeArray::FromStrings({u"Б", u"а", u"б", u"А", u"В"});
      EXPECT_TRUE(SortAll(sort, a, Variant::Missing(), false, mode));
      EXPECT_EQ(a.ToStrings(), text_order[sort]) << kNames[sort] << " mode " << mode;
    }
  }
}

// `n` rows of (key with many repeats and case variants, row number, key#row number).
SafeArray RandomTable(int n, uint32_t seed) {
  static const char16_t* const kPieces[] = {u"a", u"A", u"b", u"B", u"ё", u"Ё", u"е", u"ж", u" ", u"я"};
  std::mt19937 rng(seed);
  std::vector<std::vector<String>> rows;
  for (int i = 0; i < n; ++i) {
    String key;
    for (int k = rng() % 4; k > 0; --k) key += kPieces[rng() % std::size(kPieces)];
    rows.push_back({key, FromAscii(std::to_string(i)), key + u"#" + FromAscii(std::to_string(i))});
  }
  return Table(rows);
}

TEST(ArraySort, EveryModeOrdersAndPermutesTablesAndLists) {
  ScopedLocale ru("ru_RU");
  const SafeArray original = RandomTable(1500, 11);
  for (Sort sort : {kBubble, kSelection, kQuick}) {
    for (int variant = 0; variant < 4; ++variant) {
      const bool hi_to_low = variant & 1;
      const int32_t mode = variant & 2 ? vbTextCompare : vbBinaryCompare, sign = hi_to_low ? -1 : 1;
      const std::string what = kNames[sort] + std::string(" variant ") + std::to_string(variant);
      SafeArray table = original;
      ASSERT_TRUE(SortAll(sort, table, Variant(int32_t{0}), hi_to_low, mode)) << what;
      std::vector<bool> seen(1500);
      for (int r = 0; r < 1500; ++r) {
        const int id = std::stoi(ToUtf8(table.get(1, r).asString()));
        ASSERT_FALSE(seen[id]) << what << ": row " << id << " twice";
        seen[id] = true;
        ASSERT_EQ(table.get(2, r), original.get(2, id)) << what << ": row split";
        if (r > 0) {
          ASSERT_LE(sign * CompareStrings(table.get(0, r - 1).asString(),
                                          table.get(0, r).asString(), mode), 0) << what << " at " << r;
        }
      }
      std::vector<String> keys = Column(original, 0);
      SafeArray list = SafeArray::FromStrings(keys, 3);
      ASSERT_TRUE(SortAll(sort, list, Variant::Missing(), hi_to_low, mode)) << what;
      std::vector<String> got = list.ToStrings();
      for (size_t i = 1; i < got.size(); ++i) {
        ASSERT_LE(sign * CompareStrings(got[i - 1], got[i], mode), 0) << what << " list at " << i;
      }
      std::sort(got.begin(), got.end());
      std::sort(keys.begin(), keys.end());
      EXPECT_EQ(got, keys) << what << " list: not a permutation";
    }
  }
}

TEST(ArraySort, RangesAreSortedInPlaceAndQuickBelowTwentyOneRowsIsSelection) {
  auto ar = New<clsZKArray>();
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    const SafeArray original = RandomTable(30, seed);
    const bool hi_to_low = seed % 2;
    const int32_t mode = seed % 3 == 0 ? vbTextCompare : vbBinaryCompare;
    for (auto [lo, hi] : {std::pair{0, 19}, std::pair{5, 24}, std::pair{3, 4}}) {
      SafeArray quick = original, selection = original;
      ASSERT_TRUE(ar->SortQuick(quick, lo, hi, Variant(int32_t{0}), hi_to_low, mode));
      ASSERT_TRUE(ar->SortSelection(selection, lo, hi, Variant(int32_t{0}), hi_to_low, mode));
      EXPECT_EQ(quick, selection) << "seed " << seed << ", rows " << lo << " to " << hi;
    }
  }
  const SafeArray original = RandomTable(400, 5);
  SafeArray t = original;
  ASSERT_TRUE(ar->SortQuick(t, 50, 349, Variant(int32_t{0})));
  for (int r = 0; r < 400; ++r) {
    if (r < 50 || r > 349) ASSERT_EQ(t.get(2, r), original.get(2, r)) << "row " << r << " moved";
    if (r > 50 && r <= 349) ASSERT_LE(CompareStrings(t.get(0, r - 1).asString(), t.get(0, r).asString(), 0), 0);
  }
  // Every partition as lopsided as it gets.
  std::vector<String> same(5000, u"x");
  same[7] = u"a";
  SafeArray list = SafeArray::FromStrings(same);
  ASSERT_TRUE(ar->SortQuick(list, 0, 4999));
  EXPECT_EQ(list.get(0), Variant(u"a"));
  EXPECT_EQ(list.get(4999), Variant(u"x"));
}

TEST(ArraySort, SortsNonStringsByTheirTextAndLeavesShortRangesAlone) {
  auto ar = New<clsZKArray>();
  SafeArray a = SafeArray::FromVariants({Variant(int32_t{10}), Variant(u"9"), Variant(), Variant(true)});
  ASSERT_TRUE(ar->SortBubble(a));
  EXPECT_EQ(a, SafeArray::FromVariants({Variant(), Variant(int32_t{10}), Variant(u"9"), Variant(true)}));
  SafeArray never(VarType::kString), one = SafeArray::FromStrings({u"only"});
  EXPECT_TRUE(ar->SortSelection(never, 4, 4));
  EXPECT_TRUE(ar->SortQuick(never, 9, 2, Variant(u"not a column")));
  EXPECT_TRUE(ar->SortBubble(one));
}

TEST(ArraySort, ErrorsAreRaisedAgainUnderTheSortsOwnNumbers) {
  const SafeArray three = SafeArray::FromStrings({u"c", u"b", u"a"});
  const SafeArray table = Table({{u"c", u"1"}, {u"b", u"2"}, {u"a", u"3"}});
  const struct {
    const char* what;
    Sort sort;
    SafeArray array;
    int32_t min_index, max_index;
    Variant column;
    RuntimeError cause;
  } cases[] = {
      {"a never-dimensioned array", kBubble, SafeArray(VarType::kString), 0, 0, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a table without a sort column", kBubble, table, 0, 0, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a column that is not a number", kSelection, table, 0, 2, Variant(u"key"),
       RuntimeError::kTypeMismatch},
      {"a range before the first row", kQuick, three, -1, 2, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a Null element", kQuick, SafeArray::FromVariants({Variant(u"b"), Variant::Null()}), 0, 1,
       Variant::Missing(), RuntimeError::kInvalidUseOfNull},
  };
  const int32_t numbers[] = {xcZKERR_ARRAY_SORTBUBBLE, xcZKERR_ARRAY_SORTSEL, xcZKERR_ARRAY_SORTQUICK};
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    SafeArray a = c.array;
    testing::ExpectError(
        [&] {
          if (c.sort == kBubble) ar->SortBubble(a, c.column);
          if (c.sort == kSelection) ar->SortSelection(a, c.min_index, c.max_index, c.column);
          if (c.sort == kQuick) ar->SortQuick(a, c.min_index, c.max_index, c.column);
        },
        numbers[c.sort], u"ZKRuntimeLib.clsZKArray." + FromAscii(kNames[c.sort]),
        RuntimeErrorText(static_cast<int32_t>(c.cause)), c.what);
    EXPECT_EQ(a, c.array) << c.what << ": the array must be left as it was";
  }
}

}  // namespace
}  // namespace tsruntime
