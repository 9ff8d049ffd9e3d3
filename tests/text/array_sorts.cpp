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
using testing::Words;

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
      {"bubble descending over four", kBubble, true, "b1 a1 a2 b2", "b1 b2 a2 a1"},
      {"quick on five rows is selection", kQuick, false, "b1 a1 b2 a2 c1", "a1 a2 b2 b1 c1"}};
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
  const int factor = down ? -1 : 1;
  const int64_t n = static_cast<int64_t>(rows.size());
  for (int64_t gap = n / 2; gap >= 1; gap /= 2) {
    for (int64_t i = gap; i < n; ++i) {
      for (int64_t j = i - gap; j >= 0; j -= gap) {
        if (CompareStrings(rows[j].first, rows[j + gap].first, mode) * factor < 1) break;
        std::swap(rows[j], rows[j + gap]);
      }
    }
  }
  for (size_t i = 0; i < rows.size(); ++i) tags[i] = rows[i].second;
  return tags;
}

TEST(ArraySort, BubbleOverManyRowsLeavesEqualKeysWhereItsStepsDo) {
  ScopedLocale locale("ru_RU");
  for (const int n : {70, 300, 2000}) {
    for (const int32_t mode : {vbBinaryCompare, vbTextCompare}) {
      for (const bool down : {false, true}) {
        SafeArray t = RandomTable(n, static_cast<uint32_t>(n + mode));
        const std::vector<String> expected = BubbleSteps(Column(t, 0), Column(t, 2), down, mode);
        ASSERT_TRUE(SortRows(kBubble, t, 0, n - 1, 0, down, mode));
        EXPECT_EQ(Column(t, 2), expected) << n << " rows, mode " << mode << ", down " << down;
      }
    }
  }
}

TEST(ArraySort, EveryModeOrdersAndPermutesTablesAndLists) {
  ScopedLocale ru("ru_RU");
  const SafeArray original = RandomTable(1500, 11);
  const std::vector<String> keys = Column(original, 0), rows = Column(original, 2);
  for (int run = 0; run < 12; ++run) {
    const Sort sort = Sort(run / 4);
    const bool down = run & 1;
    const int32_t mode = run & 2 ? vbTextCompare : vbBinaryCompare;
    auto before = [&](auto& a, auto& b) { return CompareStrings(a, b, mode) * (1 - 2 * down) < 0; };
    const std::string what = std::string(kNames[sort]) + ", run " + std::to_string(run);
    SafeArray table = original, list = SafeArray::FromStrings(keys, 3);
    ASSERT_TRUE(SortRows(sort, table, 0, 1499, 0, down, mode)) << what;
    ASSERT_TRUE(SortRows(sort, list, 3, 1502, Variant::Missing(), down, mode)) << what;
    const auto sorted_keys = Column(table, 0), ids = Column(table, 1), whole = Column(table, 2);
    EXPECT_TRUE(std::is_sorted(sorted_keys.begin(), sorted_keys.end(), before)) << what;
    EXPECT_TRUE(std::is_permutation(whole.begin(), whole.end(), rows.begin())) << what;
    for (size_t r = 0; r < whole.size(); ++r) {
      ASSERT_EQ(whole[r], sorted_keys[r] + u"#" + ids[r]) << what << ": row " << r << " split";
    }
    const std::vector<String> items = list.ToStrings();
    EXPECT_TRUE(std::is_sorted(items.begin(), items.end(), before)) << what << " list";
    EXPECT_TRUE(std::is_permutation(items.begin(), items.end(), keys.begin())) << what << " list";
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
      {"a Null element", kQuick, SafeArray::FromVariants({u"b", Variant::Null()}), none,
       E::kInvalidUseOfNull}};
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
