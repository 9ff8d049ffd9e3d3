// clsZKArray's three sorts: where equal keys end up, order and permutation in every mode,
// and the errors they raise under their own numbers.
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
  if (sort == kQuick) return ar->SortQuick(a, a.lbound(dim), a.ubound(dim), column, hi_to_low, mode);
  return ar->SortSelection(a, a.lbound(dim), a.ubound(dim), column, hi_to_low, mode);
}

TEST(ArraySort, EqualKeysEndWhereTheStepsLeaveThem) {
  // Rows of (tag, key, tag), columns and rows from 1, sorted on column 2.
  auto rows = [](std::vector<String> tags) {
    std::vector<std::vector<String>> out;
    for (const String& t : tags) out.push_back({t, t.substr(0, 1), t});
    return Table(out, 1, 1);
  };
  const SafeArray five = rows({u"b1", u"a1", u"b2", u"a2", u"c1"});
  const SafeArray four = rows({u"b1", u"a1", u"a2", u"b2"});
  const struct { const char* what; Sort sort; bool hi_to_low; const SafeArray& table;
                 std::vector<String> tags_after; } cases[] = {
      {"selection swaps b1 behind b2", kSelection, false, five, {u"a1", u"a2", u"b2", u"b1", u"c1"}},
      {"selection descending", kSelection, true, five, {u"c1", u"b2", u"b1", u"a2", u"a1"}},
      {"bubble keeps these in order", kBubble, false, five, {u"a1", u"a2", u"b1", u"b2", u"c1"}},
      {"bubble descending", kBubble, true, five, {u"c1", u"b1", u"b2", u"a1", u"a2"}},
      {"bubble's gap 2 pass reverses the a's", kBubble, false, four, {u"a2", u"a1", u"b1", u"b2"}},
      {"bubble descending over four", kBubble, true, four, {u"b1", u"b2", u"a2", u"a1"}},
      {"quick on five rows is selection", kQuick, false, five, {u"a1", u"a2", u"b2", u"b1", u"c1"}}};
  for (const auto& c : cases) {
    SafeArray t = c.table;
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

// `n` rows of (a key with many repeats and case variants, row number, key#row number).
SafeArray RandomTable(int n, uint32_t seed) {
  static const StringView kPieces = u"aAbBёЁежя ";
  std::mt19937 rng(seed);
  std::vector<std::vector<String>> rows;
  for (int i = 0; i < n; ++i) {
    String key;
    for (int k = rng() % 4; k > 0; --k) key += kPieces[rng() % kPieces.size()];
    rows.push_back({key, FromAscii(std::to_string(i)), key + u"#" + FromAscii(std::to_string(i))});
  }
  return Table(rows);
}

TEST(ArraySort, EveryModeOrdersAndPermutesTablesAndLists) {
  ScopedLocale ru("ru_RU");
  const SafeArray original = RandomTable(1500, 11);
  const std::vector<String> keys = Column(original, 0), rows = Column(original, 2);
  for (int run = 0; run < 12; ++run) {
    const Sort sort = Sort(run / 4);
    const bool hi_to_low = run & 1;
    const int32_t mode = run & 2 ? vbTextCompare : vbBinaryCompare;
    auto in_order = [&](const String& a, const String& b) {
      return CompareStrings(a, b, mode) * (hi_to_low ? -1 : 1) < 0;
    };
    const std::string what = kNames[sort] + std::string(hi_to_low ? " down" : " up") +
                             (mode ? " text" : " binary");
    SafeArray table = original, list = SafeArray::FromStrings(keys, 3);
    ASSERT_TRUE(SortAll(sort, table, Variant(int32_t{0}), hi_to_low, mode)) << what;
    ASSERT_TRUE(SortAll(sort, list, Variant::Missing(), hi_to_low, mode)) << what;
    const auto sorted_keys = Column(table, 0), ids = Column(table, 1), whole = Column(table, 2);
    EXPECT_TRUE(std::is_sorted(sorted_keys.begin(), sorted_keys.end(), in_order)) << what;
    EXPECT_TRUE(std::is_permutation(whole.begin(), whole.end(), rows.begin())) << what;
    for (size_t r = 0; r < whole.size(); ++r) {
      ASSERT_EQ(whole[r], sorted_keys[r] + u"#" + ids[r]) << what << ": row " << r << " split";
    }
    const std::vector<String> items = list.ToStrings();
    EXPECT_TRUE(std::is_sorted(items.begin(), items.end(), in_order)) << what << " list";
    EXPECT_TRUE(std::is_permutation(items.begin(), items.end(), keys.begin())) << what << " list";
  }
}

TEST(ArraySort, QuickBelowTwentyOneRowsIsSelectionAndCopesWithEqualKeys) {
  auto ar = New<clsZKArray>();
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    const SafeArray original = RandomTable(30, seed);
    const int32_t mode = seed % 3 == 0 ? vbTextCompare : vbBinaryCompare;
    for (auto [lo, hi] : {std::pair{0, 19}, std::pair{5, 24}, std::pair{3, 4}}) {
      SafeArray quick = original, selection = original;
      ASSERT_TRUE(ar->SortQuick(quick, lo, hi, Variant(int32_t{0}), seed % 2, mode));
      ASSERT_TRUE(ar->SortSelection(selection, lo, hi, Variant(int32_t{0}), seed % 2, mode));
      EXPECT_EQ(quick, selection) << "seed " << seed << ", rows " << lo << " to " << hi;
    }
  }
  std::vector<String> same(5000, u"x");  // every partition as lopsided as it gets
  same[7] = u"a";
  SafeArray list = SafeArray::FromStrings(same);
  ASSERT_TRUE(ar->SortQuick(list, 0, 4999));
  EXPECT_EQ(list.get(0), Variant(u"a"));
  EXPECT_EQ(list.get(4999), Variant(u"x"));
}

TEST(ArraySort, SortsOtherValuesByTheirTextAndLeavesShortRangesAlone) {
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
  const SafeArray table = Table({{u"c", u"1"}, {u"b", u"2"}});
  const struct { const char* what; Sort sort; SafeArray array; int32_t lo, hi; Variant column;
                 RuntimeError cause; } cases[] = {
      {"a never-dimensioned array", kBubble, SafeArray(VarType::kString), 0, 0, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a column that is not a number", kSelection, table, 0, 1, Variant(u"key"),
       RuntimeError::kTypeMismatch},
      {"a Null element", kQuick, SafeArray::FromVariants({Variant(u"b"), Variant::Null()}), 0, 1,
       Variant::Missing(), RuntimeError::kInvalidUseOfNull}};
  const int32_t numbers[] = {xcZKERR_ARRAY_SORTBUBBLE, xcZKERR_ARRAY_SORTSEL, xcZKERR_ARRAY_SORTQUICK};
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    SafeArray a = c.array;
    testing::ExpectError(
        [&] {
          if (c.sort == kBubble) ar->SortBubble(a, c.column);
          if (c.sort == kSelection) ar->SortSelection(a, c.lo, c.hi, c.column);
          if (c.sort == kQuick) ar->SortQuick(a, c.lo, c.hi, c.column);
        },
        numbers[c.sort], u"ZKRuntimeLib.clsZKArray." + FromAscii(kNames[c.sort]),
        RuntimeErrorText(static_cast<int32_t>(c.cause)), c.what);
    EXPECT_EQ(a, c.array) << c.what << ": the array must be left as it was";
  }
}

}  // namespace
}  // namespace tsruntime
