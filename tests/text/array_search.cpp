// clsZKArray.FindInArray and IsArrayNothing, and the root object's GetObjArray.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/array_test_util.h"
#include "tsruntime/clsZKArray.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Table;

struct FindCase {
  const char* what;
  std::vector<String> sorted;
  int32_t lower;
  String search;
  bool hi_to_low;
  int32_t mode;
  bool found;
  int32_t row_index;
};

TEST(ArrayFind, ReportsTheIndexFoundOrWhereToInsert) {
  const std::vector<String> up = {u"b", u"d", u"f"};
  const std::vector<String> down = {u"f", u"d", u"b"};
  const FindCase cases[] = {
      {"below every element: the lower bound", up, 0, u"a", false, 0, false, 0},
      {"the first element", up, 0, u"b", false, 0, true, 0},
      {"the middle element", up, 0, u"d", false, 0, true, 1},
      {"the last element", up, 0, u"f", false, 0, true, 2},
      {"between the first two", up, 0, u"c", false, 0, false, 1},
      {"between the last two", up, 0, u"e", false, 0, false, 2},
      {"above every element: the upper bound + 1", up, 0, u"g", false, 0, false, 3},
      {"bounds from 10", up, 10, u"e", false, 0, false, 12},
      {"bounds from 10, found", up, 10, u"b", false, 0, true, 10},
      {"bounds below zero", up, -3, u"d", false, 0, true, -2},
      {"bounds below zero, a miss", up, -3, u"c", false, 0, false, -2},
      {"descending, found", down, 0, u"b", true, 0, true, 2},
      {"descending, above every element", down, 0, u"g", true, 0, false, 0},
      {"descending, below every element", down, 0, u"a", true, 0, false, 3},
      {"descending, between", down, 0, u"e", true, 0, false, 1},
      {"binary compare: capitals sort first", up, 0, u"D", false, 0, false, 0},
      {"text compare: D finds d", up, 0, u"D", false, 1, true, 1},
      {"one element, found", {u"m"}, 0, u"m", false, 0, true, 0},
      {"one element, above", {u"m"}, 0, u"z", false, 0, false, 1},
      {"one element, below", {u"m"}, 0, u"a", false, 0, false, 0},
  };
  for (const FindCase& c : cases) {
    auto ar = New<clsZKArray>();
    int32_t at = 12345;
    EXPECT_EQ(ar->FindInArray(SafeArray::FromStrings(c.sorted, c.lower), c.search, &at,
                              c.hi_to_low, c.mode),
              c.found)
        << c.what;
    EXPECT_EQ(at, c.row_index) << c.what;
  }
}

TEST(ArrayFind, BoundsFromMinusOneToZeroEndWithoutProbingForEver) {
  // The midpoint of -1 and 0 truncates to 0; a search that has to go below it must
  // still look at element -1.
  const SafeArray two = SafeArray::FromStrings({u"b", u"d"}, -1);
  const struct {
    String search;
    bool found;
    int32_t at;
  } cases[] = {{u"a", false, -1}, {u"b", true, -1}, {u"c", false, 0},
               {u"d", true, 0},   {u"e", false, 1}};
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    int32_t at = 99;
    EXPECT_EQ(ar->FindInArray(two, c.search, &at), c.found) << ToUtf8(c.search);
    EXPECT_EQ(at, c.at) << ToUtf8(c.search);
  }
}

TEST(ArrayFind, SearchesOneColumnOfATablesRows) {
  const SafeArray t = Table({{u"x", u"ab"}, {u"y", u"cd"}, {u"z", u"ef"}, {u"w", u"gh"}}, 1, 5);
  auto ar = New<clsZKArray>();
  int32_t at = 0;
  EXPECT_TRUE(ar->FindInArray(t, u"ef", &at, false, 0, Variant(int32_t{2})));
  EXPECT_EQ(at, 7);
  EXPECT_FALSE(ar->FindInArray(t, u"ce", &at, false, 0, Variant(u"2")));
  EXPECT_EQ(at, 7);
  EXPECT_FALSE(ar->FindInArray(t, u"a", nullptr, false, 0, Variant(2.4)));
}

TEST(ArrayFind, FindsEveryElementOfALargeSortedArrayAndPlacesEveryGap) {
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

TEST(ArrayFind, LetsTheHostRuntimesErrorsThrough) {
  const struct {
    const char* what;
    SafeArray array;
    Variant column;
    RuntimeError error;
  } cases[] = {
      {"an empty array", SafeArray::FromStrings({}), Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a never-dimensioned array", SafeArray(VarType::kString), Variant::Missing(),
       RuntimeError::kSubscriptOutOfRange},
      {"a list searched as a table", SafeArray::FromStrings({u"a"}), Variant(int32_t{0}),
       RuntimeError::kSubscriptOutOfRange},
      {"a column outside the table", Table({{u"a"}, {u"b"}}), Variant(int32_t{1}),
       RuntimeError::kSubscriptOutOfRange},
      {"a column beyond 16 bits", Table({{u"a"}, {u"b"}}), Variant(int32_t{40000}),
       RuntimeError::kOverflow},
      {"a Null element", SafeArray::FromVariants({Variant::Null()}), Variant::Missing(),
       RuntimeError::kInvalidUseOfNull},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    try {
      ar->FindInArray(c.array, u"a", nullptr, false, 0, c.column);
      ADD_FAILURE() << c.what << ": no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), static_cast<int32_t>(c.error)) << c.what;
    }
  }
}

TEST(ArrayFind, WritesRowIndexBufBackWhenCalledByName) {
  Ref<Object> ar = CreateObject(u"clsZKArray");
  std::vector<Argument> args{{u"", Variant(SafeArray::FromStrings({u"a", u"c"}))},
                             {u"", Variant(u"b")},
                             {u"RowIndexBuf", Variant(int16_t{7})}};
  EXPECT_EQ(Invoke(*ar, u"FindInArray", InvokeKind::kCall, args), Variant(false));
  EXPECT_EQ(args[2].value, Variant(int32_t{1}));
  std::vector<Argument> without{{u"", Variant(SafeArray::FromStrings({u"a", u"c"}))},
                                {u"", Variant(u"c")}};
  EXPECT_EQ(Invoke(*ar, u"FindInArray", InvokeKind::kCall, without), Variant(true));
}

TEST(ArrayNothing, IsTrueForAnythingWithoutElements) {
  const struct {
    const char* what;
    Variant value;
    bool nothing;
  } cases[] = {
      {"Empty", Variant(), true},
      {"a string", Variant(u"abc"), true},
      {"a number", Variant(int32_t{3}), true},
      {"a never-dimensioned array", Variant(SafeArray(VarType::kString)), true},
      {"an array from 0 to -1", Variant(SafeArray::FromStrings({})), true},
      {"an array from 5 to 4", Variant(SafeArray(VarType::kString, {Bounds{5, 4}})), true},
      {"a table without columns",
       Variant(SafeArray(VarType::kString, {Bounds{0, -1}, Bounds{0, 3}})), true},
      {"one element", Variant(SafeArray::FromStrings({u""})), false},
      {"a table", Variant(SafeArray(VarType::kString, {Bounds{1, 2}, Bounds{0, -1}})), false},
      {"a byte array", Variant(SafeArray::FromBytes(std::vector<uint8_t>{1})), false},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    EXPECT_EQ(ar->IsArrayNothing(c.value), c.nothing) << c.what;
    std::vector<Argument> args{{u"Expression", c.value}};
    EXPECT_EQ(Invoke(*ar, u"IsArrayNothing", InvokeKind::kCall, args), Variant(c.nothing))
        << c.what << ", called by name";
  }
}

TEST(ArrayRoot, GetObjArrayHandsOutANewObjectEachRead) {
  Ref<Object> lib = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> none;
  const Variant first = Invoke(*lib, u"GetObjArray", InvokeKind::kCall, none);
  const Variant second = Invoke(*lib, u"GetObjArray", InvokeKind::kCall, none);
  ASSERT_TRUE(first.isObject() && second.isObject());
  EXPECT_NE(first.asObject(), second.asObject());
  EXPECT_EQ(first.asObject()->classInfo().name, u"clsZKArray");
  EXPECT_TRUE(New<clsZKRunTimeLib>()->GetObjArray()->IsArrayNothing(Variant()));
}

}  // namespace
}  // namespace tsruntime
