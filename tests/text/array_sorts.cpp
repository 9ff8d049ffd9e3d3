// clsZKArray's three sorts: where equal keys end up, order and permutation in every
// mode, and the errors they raise under their own numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "text/array_test_util.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

using testing::Column;
using testing::Show;
using testing::Table;

enum class Sort { kBubble, kSelection, kQuick };

const char* Name(Sort s) {
  return s == Sort::kBubble ? "SortBubble" : s == Sort::kSelection ? "SortSelection" : "SortQuick";
}

// Sorts every row (or element) of `a` with `sort`.
bool SortAll(clsZKArray& ar, Sort sort, SafeArray& a, const Variant& column, bool hi_to_low,
             int32_t mode) {
  const int dim = column.isMissing() ? 1 : 2;
  switch (sort) {
    case Sort::kBubble:
      return ar.SortBubble(a, column, hi_to_low, mode);
    case Sort::kSelection:
      return ar.SortSelection(a, a.lbound(dim), a.ubound(dim), column, hi_to_low, mode);
    case Sort::kQuick:
      return ar.SortQuick(a, a.lbound(dim), a.ubound(dim), column, hi_to_low, mode);
  }
  return false;
}

// Rows of (tag, key, tag again), columns 1 to 3 and rows from 1; the sorts key on
// column 2 and must carry the tags along.
SafeArray Tagged(const std::vector<std::pair<const char16_t*, const char16_t*>>& rows) {
  std::vector<std::vector<String>> cells;
  for (const auto& [tag, key] : rows) cells.push_back({tag, key, tag});
  return Table(cells, 1, 1);
}

struct EqualKeyCase {
  const char* what;
  Sort sort;
  bool hi_to_low;
  std::vector<std::pair<const char16_t*, const char16_t*>> rows;  // tag, key
  std::vector<String> tags_after;
};

TEST(ArraySortEqualKeys, EndWhereTheStepsLeaveThem) {
  const std::vector<std::pair<const char16_t*, const char16_t*>> five = {
      {u"b1", u"b"}, {u"a1", u"a"}, {u"b2", u"b"}, {u"a2", u"a"}, {u"c1", u"c"}};
  const std::vector<std::pair<const char16_t*, const char16_t*>> four = {
      {u"b1", u"b"}, {u"a1", u"a"}, {u"a2", u"a"}, {u"b2", u"b"}};
  const EqualKeyCase cases[] = {
      {"selection swaps the first b behind the second", Sort::kSelection, false, five,
       {u"a1", u"a2", u"b2", u"b1", u"c1"}},
      {"selection descending", Sort::kSelection, true, five,
       {u"c1", u"b2", u"b1", u"a2", u"a1"}},
      {"bubble keeps this table's equal keys in order", Sort::kBubble, false, five,
       {u"a1", u"a2", u"b1", u"b2", u"c1"}},
      {"bubble descending", Sort::kBubble, true, five, {u"c1", u"b1", u"b2", u"a1", u"a2"}},
      {"bubble's gap 2 pass reverses the a's", Sort::kBubble, false, four,
       {u"a2", u"a1", u"b1", u"b2"}},
      {"bubble descending over four rows", Sort::kBubble, true, four,
       {u"b1", u"b2", u"a2", u"a1"}},
      {"quick on five rows is selection", Sort::kQuick, false, five,
       {u"a1", u"a2", u"b2", u"b1", u"c1"}},
  };
  for (const EqualKeyCase& c : cases) {
    auto ar = New<clsZKArray>();
    SafeArray t = Tagged(c.rows);
    EXPECT_TRUE(SortAll(*ar, c.sort, t, Variant(int32_t{2}), c.hi_to_low, vbBinaryCompare))
        << c.what;
    EXPECT_EQ(Column(t, 1), c.tags_after) << c.what << ": got " << Show(Column(t, 1));
    EXPECT_EQ(Column(t, 3), c.tags_after) << c.what << ": rows must move whole";
  }
}

struct CaseBlindCase {
  const char* what;
  Sort sort;
  int32_t mode;
  std::vector<String> list;
  std::vector<String> after;
};

TEST(ArraySortEqualKeys, TextCompareTreatsCaseVariantsAsEqualKeys) {
  const CaseBlindCase cases[] = {
      {"bubble, text: a and A are equal keys", Sort::kBubble, vbTextCompare,
       {u"B", u"a", u"A", u"b"}, {u"A", u"a", u"B", u"b"}},
      {"bubble, binary: capitals first", Sort::kBubble, vbBinaryCompare,
       {u"B", u"a", u"A", u"b"}, {u"A", u"B", u"a", u"b"}},
      {"selection, text", Sort::kSelection, vbTextCompare, {u"B", u"a", u"b", u"A", u"C"},
       {u"a", u"A", u"b", u"B", u"C"}},
      {"selection, database compare as text", Sort::kSelection, vbDatabaseCompare,
       {u"B", u"a", u"b", u"A", u"C"}, {u"a", u"A", u"b", u"B", u"C"}},
      {"quick, text, Cyrillic", Sort::kQuick, vbTextCompare, {u"Б", u"а", u"б", u"А", u"В"},
       {u"а", u"А", u"б", u"Б", u"В"}},
  };
  ScopedLocale ru("ru_RU");
  for (const CaseBlindCase& c : cases) {
    auto ar = New<clsZKArray>();
    SafeArray a = SafeArray::FromStrings(c.list);
    EXPECT_TRUE(SortAll(*ar, c.sort, a, Variant::Missing(), false, c.mode)) << c.what;
    EXPECT_EQ(a.ToStrings(), c.after) << c.what << ": got " << Show(a.ToStrings());
  }
}

// A table of `n` rows: a key with many repeats and case variants, a row number, and
// key + row number to check that rows stay whole.
SafeArray RandomTable(int n, uint32_t seed) {
  static const char16_t* const kPieces[] = {u"a", u"A", u"b", u"B", u"ё", u"Ё", u"е",
                                            u"ж", u" ", u"z", u"я", u"Я"};
  std::mt19937 rng(seed);
  std::vector<std::vector<String>> rows;
  for (int i = 0; i < n; ++i) {
    String key;
    for (int k = rng() % 4; k > 0; --k) key += kPieces[rng() % std::size(kPieces)];
    const String id = FromAscii(std::to_string(i));
    rows.push_back({key, id, key + u"#" + id});
  }
  return Table(rows);
}

// Checks that `sorted` holds the rows of `original` once each, in order of column 0.
void ExpectSortedRows(const SafeArray& original, const SafeArray& sorted, bool hi_to_low,
                      int32_t mode, const std::string& what) {
  const int n = original.ubound(2) + 1;
  std::vector<bool> seen(n);
  for (int r = 0; r < n; ++r) {
    const int id = std::stoi(ToUtf8(sorted.get(1, r).asString()));
    ASSERT_TRUE(id >= 0 && id < n && !seen[id]) << what << ": row " << r << " duplicated";
    seen[id] = true;
    ASSERT_EQ(sorted.get(0, r), original.get(0, id)) << what << ": key moved without its row";
    ASSERT_EQ(sorted.get(2, r), original.get(2, id)) << what << ": row split";
    if (r > 0) {
      const int c = CompareStrings(sorted.get(0, r - 1).asString(),
                                   sorted.get(0, r).asString(), mode);
      ASSERT_LE(c * (hi_to_low ? -1 : 1), 0) << what << ": out of order at row " << r;
    }
  }
}

TEST(ArraySortLarge, EveryModeOrdersAndPermutesTablesAndLists) {
  ScopedLocale ru("ru_RU");
  const SafeArray original = RandomTable(1500, 11);
  for (Sort sort : {Sort::kBubble, Sort::kSelection, Sort::kQuick}) {
    for (bool hi_to_low : {false, true}) {
      for (int32_t mode : {vbBinaryCompare, vbTextCompare}) {
        const std::string what = std::string(Name(sort)) + (hi_to_low ? " desc" : " asc") +
                                 (mode ? " text" : " binary");
        auto ar = New<clsZKArray>();
        SafeArray table = original;
        ASSERT_TRUE(SortAll(*ar, sort, table, Variant(int32_t{0}), hi_to_low, mode)) << what;
        ExpectSortedRows(original, table, hi_to_low, mode, what + " table");

        // The same keys as a list; lists hold nothing but the key.
        std::vector<String> keys = Column(original, 0);
        SafeArray list = SafeArray::FromStrings(keys, 3);
        ASSERT_TRUE(SortAll(*ar, sort, list, Variant::Missing(), hi_to_low, mode)) << what;
        std::vector<String> got = list.ToStrings();
        for (size_t i = 1; i < got.size(); ++i) {
          ASSERT_LE(CompareStrings(got[i - 1], got[i], mode) * (hi_to_low ? -1 : 1), 0)
              << what << " list: out of order at " << i;
        }
        std::sort(got.begin(), got.end());
        std::sort(keys.begin(), keys.end());
        EXPECT_EQ(got, keys) << what << " list: not a permutation";
      }
    }
  }
}

TEST(ArraySortRanges, QuickBelowTwentyOneRowsIsExactlySelection) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    const SafeArray original = RandomTable(30, seed);
    for (auto [lo, hi] : {std::pair{0, 19}, std::pair{5, 24}, std::pair{3, 4}}) {
      auto ar = New<clsZKArray>();
      SafeArray quick = original, selection = original;
      const bool hi_to_low = seed % 2 == 1;
      const int32_t mode = seed % 3 == 0 ? vbTextCompare : vbBinaryCompare;
      ASSERT_TRUE(ar->SortQuick(quick, lo, hi, Variant(int32_t{0}), hi_to_low, mode));
      ASSERT_TRUE(ar->SortSelection(selection, lo, hi, Variant(int32_t{0}), hi_to_low, mode));
      EXPECT_EQ(quick, selection) << "seed " << seed << ", rows " << lo << " to " << hi;
    }
  }
}

TEST(ArraySortRanges, RowsOutsideTheRangeStayAndTheRangeIsSorted) {
  const SafeArray original = RandomTable(400, 5);
  for (Sort sort : {Sort::kSelection, Sort::kQuick}) {
    auto ar = New<clsZKArray>();
    SafeArray t = original;
    const bool ok = sort == Sort::kQuick ? ar->SortQuick(t, 50, 349, Variant(int32_t{0}))
                                         : ar->SortSelection(t, 50, 349, Variant(int32_t{0}));
    ASSERT_TRUE(ok);
    for (int r = 0; r < 400; ++r) {
      if (r < 50 || r > 349) {
        ASSERT_EQ(t.get(2, r), original.get(2, r)) << Name(sort) << ": row " << r << " moved";
      } else if (r > 50) {
        ASSERT_LE(CompareStrings(t.get(0, r - 1).asString(), t.get(0, r).asString(), 0), 0)
            << Name(sort) << ": out of order at row " << r;
      }
    }
  }
}

TEST(ArraySortRanges, QuickCopesWithAllKeysEqual) {
  // Every partition is as lopsided as it gets: one row split off at a time.
  auto ar = New<clsZKArray>();
  std::vector<String> same(5000, u"x");
  same[7] = u"a";
  SafeArray list = SafeArray::FromStrings(same);
  ASSERT_TRUE(ar->SortQuick(list, 0, 4999));
  const std::vector<String> got = list.ToStrings();
  EXPECT_EQ(got.front(), u"a");
  EXPECT_EQ(std::count(got.begin(), got.end(), u"x"), 4999);
}

TEST(ArraySortRanges, ElementsThatAreNotStringsSortByTheirText) {
  auto ar = New<clsZKArray>();
  SafeArray a = SafeArray::FromVariants(
      {Variant(int32_t{10}), Variant(u"9"), Variant(), Variant(int16_t{2}), Variant(true)});
  ASSERT_TRUE(ar->SortBubble(a));
  // "" < "10" < "2" < "9" < "True": by text, keeping each element's type.
  EXPECT_EQ(a.get(0), Variant());
  EXPECT_EQ(a.get(1), Variant(int32_t{10}));
  EXPECT_EQ(a.get(2), Variant(int16_t{2}));
  EXPECT_EQ(a.get(3), Variant(u"9"));
  EXPECT_EQ(a.get(4), Variant(true));
}

TEST(ArraySortRanges, RangesOfFewerThanTwoRowsAreNotLookedAt) {
  auto ar = New<clsZKArray>();
  SafeArray never(VarType::kString);
  EXPECT_TRUE(ar->SortSelection(never, 4, 4));
  EXPECT_TRUE(ar->SortQuick(never, 9, 2, Variant(u"not a column")));
  SafeArray one = SafeArray::FromStrings({u"only"});
  EXPECT_TRUE(ar->SortBubble(one));
  EXPECT_EQ(one.ToStrings(), std::vector<String>{u"only"});
  SafeArray empty = SafeArray::FromStrings({});
  EXPECT_TRUE(ar->SortBubble(empty));
}

struct SortErrorCase {
  const char* what;
  Sort sort;
  std::function<SafeArray()> make;
  int32_t min_index, max_index;
  Variant column;
  RuntimeError cause;
};

TEST(ArraySortErrors, AreRaisedAgainUnderTheSortsOwnNumbers) {
  const auto three = [] { return SafeArray::FromStrings({u"c", u"b", u"a"}); };
  const auto table = [] { return Table({{u"c", u"1"}, {u"b", u"2"}, {u"a", u"3"}}); };
  const SortErrorCase cases[] = {
      {"a never-dimensioned array", Sort::kBubble, [] { return SafeArray(VarType::kString); },
       0, 0, Variant::Missing(), RuntimeError::kSubscriptOutOfRange},
      {"a list given a sort column", Sort::kBubble, three, 0, 0, Variant(int32_t{0}),
       RuntimeError::kSubscriptOutOfRange},
      {"a table without a sort column", Sort::kBubble, table, 0, 0, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a column outside the table", Sort::kQuick, table, 0, 2, Variant(int32_t{2}),
       RuntimeError::kSubscriptOutOfRange},
      {"a column that is not a number", Sort::kSelection, table, 0, 2, Variant(u"key"),
       RuntimeError::kTypeMismatch},
      {"a range past the last row", Sort::kSelection, three, 0, 3, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a range before the first row", Sort::kQuick, three, -1, 2, Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a Null element", Sort::kQuick,
       [] { return SafeArray::FromVariants({Variant(u"b"), Variant::Null(), Variant(u"a")}); },
       0, 2, Variant::Missing(), RuntimeError::kInvalidUseOfNull},
      {"a byte array", Sort::kBubble,
       [] { return SafeArray::FromBytes(std::vector<uint8_t>{3, 1}); }, 0, 0,
       Variant::Missing(), RuntimeError::kTypeMismatch},
  };
  const std::map<Sort, int32_t> codes = {{Sort::kBubble, xcZKERR_ARRAY_SORTBUBBLE},
                                         {Sort::kSelection, xcZKERR_ARRAY_SORTSEL},
                                         {Sort::kQuick, xcZKERR_ARRAY_SORTQUICK}};
  for (const SortErrorCase& c : cases) {
    auto ar = New<clsZKArray>();
    SafeArray a = c.make();
    const SafeArray before = a;
    try {
      if (c.sort == Sort::kBubble) {
        ar->SortBubble(a, c.column);
      } else if (c.sort == Sort::kSelection) {
        ar->SortSelection(a, c.min_index, c.max_index, c.column);
      } else {
        ar->SortQuick(a, c.min_index, c.max_index, c.column);
      }
      ADD_FAILURE() << c.what << ": no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), codes.at(c.sort)) << c.what;
      EXPECT_EQ(e.source(), u"ZKRuntimeLib.clsZKArray." + FromAscii(Name(c.sort))) << c.what;
      EXPECT_EQ(e.description(), RuntimeErrorText(static_cast<int32_t>(c.cause))) << c.what;
      EXPECT_EQ(e.helpFile(), u"") << c.what;
    }
    EXPECT_EQ(a, before) << c.what << ": the array must be left as it was";
  }
}

TEST(ArraySortLateBound, SortsTheCallersArrayByName) {
  Ref<Object> ar = CreateObject(u"TSRuntimeLib.clsZKArray");
  std::vector<Argument> args{{u"", Variant(SafeArray::FromStrings({u"b", u"A", u"a", u"B"}))},
                             {u"ComareMethod", Variant(int32_t{vbTextCompare})}};
  EXPECT_EQ(Invoke(*ar, u"SortBubble", InvokeKind::kCall, args), Variant(true));
  EXPECT_EQ(args[0].value.asArray().ToStrings(),
            (std::vector<String>{u"a", u"A", u"b", u"B"}));

  std::vector<Argument> misspelt{{u"", Variant(SafeArray::FromStrings({u"b", u"a"}))},
                                 {u"CompareMethod", Variant(int32_t{0})}};
  try {
    Invoke(*ar, u"SortBubble", InvokeKind::kCall, misspelt);
    ADD_FAILURE() << "SortBubble's compare argument is spelt ComareMethod";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), static_cast<int32_t>(RuntimeError::kNamedArgumentNotFound));
  }

  std::vector<Argument> ranged{{u"", Variant(SafeArray::FromStrings({u"d", u"c", u"b", u"a"}))},
                               {u"", Variant(int32_t{1})},
                               {u"", Variant(int32_t{3})},
                               {u"SortHiToLow", Variant(true)}};
  EXPECT_EQ(Invoke(*ar, u"SortQuick", InvokeKind::kCall, ranged), Variant(true));
  EXPECT_EQ(ranged[0].value.asArray().ToStrings(),
            (std::vector<String>{u"d", u"c", u"b", u"a"}));
  ranged[3].value = Variant(false);
  EXPECT_EQ(Invoke(*ar, u"SortSelection", InvokeKind::kCall, ranged), Variant(true));
  EXPECT_EQ(ranged[0].value.asArray().ToStrings(),
            (std::vector<String>{u"d", u"a", u"b", u"c"}));
}

}  // namespace
}  // namespace tsruntime
