// Variants and arrays: type codes, typed access, bounds, tables, ReDim Preserve and the
// value semantics of an array held in a Variant.
#include <gtest/gtest.h>

#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::U8;

std::string Show(int64_t n) { return std::to_string(n); }
std::string Show(const Variant& v) { return U8(TypeName(v.type())) + " " + U8(ToString(v)); }
std::string Show(const std::vector<String>& list) {
  std::string out;
  for (size_t i = 0; i < list.size(); ++i) out += (i ? "," : "") + U8(list[i]);
  return out;
}

TEST(Variants, CarryTypeCodesHaveValueSemanticsAndAreEmptyOnceMovedFrom) {
  const std::pair<Variant, int32_t> rows[] = {
      {Variant(), 0},           {Variant::Null(), 1},      {Variant(int16_t{1}), 2},
      {Variant(int32_t{1}), 3}, {Variant(1.0f), 4},        {Variant(1.0), 5},
      {Variant(Currency{}), 6}, {Variant(Date{}), 7},      {Variant(u"x"), 8},
      {Variant::Nothing(), 9},  {Variant::Missing(), 10},  {Variant(true), 11},
      {Variant(Decimal{}), 14}, {Variant(uint8_t{1}), 17},
      {Variant(SafeArray(VarType::kLong)), 8195}, {Variant(SafeArray(VarType::kByte)), 8209},
  };
  for (const auto& [value, code] : rows) EXPECT_EQ(TypeCode(value.type()), code) << code;
  for (Variant moved : {Variant(SafeArray::FromStrings({u"x"})), Variant(u"abc"), Variant(1.5)}) {
    const Variant taken(std::move(moved));
    // NOLINTNEXTLINE: the moved-from state is a contract
    EXPECT_EQ(Show(moved), "Empty ") << "after moving a " << U8(TypeName(taken.type()));
  }
  Variant array(SafeArray::FromStrings({u"x"}));
  Variant copy = array;
  copy.asArray().set(0, Variant(u"changed"));
  array.asArray().RedimPreserve(1);
  EXPECT_EQ(Show(array.asArray().ToStrings()), "x,") << "a copied array is independent";
  EXPECT_EQ(Show(copy.asArray().ToStrings()), "changed");
  EXPECT_EQ(testing::Outcome([] { return Show(Variant(int16_t{5}).asLong()); }), "error 13");
  EXPECT_FALSE(Variant(int32_t{1}) == Variant(int16_t{1})) << "equal only in type and value";
}

TEST(SafeArrays, KeepBoundsTypesAndRaiseTheRuntimesErrors) {
  const SafeArray never(VarType::kString);
  const SafeArray none(VarType::kString, {Bounds{0, -1}});
  SafeArray list(VarType::kLong, {Bounds{1, 3}});
  SafeArray table(VarType::kString, {Bounds{0, 2}, Bounds{1, 2}});
  const Bounds all{INT32_MIN, INT32_MAX};
  testing::CheckCases({
      {"never dimensioned: no lbound", [&] { return Show(never.lbound()); }, "error 9"},
      {"0 to -1: bounds", [&] { return Show(none.lbound()) + " to " + Show(none.ubound()); },
       "0 to -1"},
      {"an empty list is 0 to -1", [] { return Show(SafeArray::FromStrings({}).ubound()); }, "-1"},
      {"index above the bound", [&] { return Show(list.get(4)); }, "error 9"},
      {"one index on a table", [&] { return Show(table.get(0)); }, "error 9"},
      {"elements convert on store", [&] { list.set(3, Variant(u"7")); return Show(list.get(3)); },
       "Long 7"},
      {"Null into a String array", [&] { table.set(0, 1, Variant::Null()); return ""; },
       "error 94"},
      {"2^32 elements", [&] { return Show(SafeArray(VarType::kLong, {all}).size()); }, "error 7"},
      {"strings past the top bound",
       [] { return Show(SafeArray::FromStrings({u"a", u"b"}, INT32_MAX).size()); }, "error 6"},
      {"no variants from the lowest bound",
       [] { return Show(SafeArray::FromVariants({}, INT32_MIN).size()); }, "error 7"},
      {"one variant at the lowest bound",
       [] { return Show(SafeArray::FromVariants({Variant(1)}, INT32_MIN).get(INT32_MIN)); },
       "Long 1"},
      {"the last index that exists",
       [] { return Show(SafeArray::FromStrings({u"a"}, INT32_MAX).get(INT32_MAX)); }, "String a"},
  });
}

TEST(SafeArrays, LayOutTablesColumnFirstAndRedimPreserveKeepsValues) {
  SafeArray table(VarType::kLong, {Bounds{0, 2}, Bounds{1, 2}});
  for (int32_t i = 0; i < 6; ++i) table.set(i % 3, 1 + i / 3, Variant(10 * (i % 3) + 1 + i / 3));
  EXPECT_EQ(Show(table.ToStrings()), "1,11,21,2,12,22") << "column 0 to 2 of row 1, then row 2";
  table.RedimPreserve(3);
  EXPECT_EQ(Show(table.ToStrings()), "1,11,21,2,12,22,0,0,0") << "ReDim adds rows";
  SafeArray never(VarType::kString);
  never.RedimPreserve(1);
  EXPECT_EQ(Show(never.lbound()) + " " + Show(never.ToStrings()), "0 ,");
  SafeArray list = SafeArray::FromStrings({u"a", u"b"}, 5);
  list.RedimPreserve(5);
  EXPECT_EQ(Show(list.lbound()) + " " + Show(list.ToStrings()), "5 a");
  SafeArray kept = SafeArray::FromStrings({u"kept"}, INT32_MIN);
  EXPECT_EQ(testing::Outcome([&] { kept.RedimPreserve(INT32_MAX); }), "error 7");
  EXPECT_EQ(Show(kept.ToStrings()), "kept") << "a refused ReDim leaves the array as it was";
}

// A value nested far deeper than the stack could recurse is released in a loop, whether
// it goes out of scope or is overwritten; the object at the bottom is released with it.
TEST(Variants, ReleaseArraysNestedTwoHundredThousandDeep) {
  const Ref<Object> bottom = New<clsZKRunTimeLib>();
  auto nested = [&] {
    Variant v(bottom);
    for (int i = 0; i < 200000; ++i) {
      std::vector<Variant> inner(1);
      inner[0] = std::move(v);
      v = Variant(SafeArray::FromVariants(std::move(inner)));
    }
    return v;
  };
  { const Variant deep = nested(); }
  EXPECT_EQ(bottom->RefCount(), 1) << "released when it goes out of scope";
  Variant deep = nested();
  deep = Variant(1);
  EXPECT_EQ(bottom->RefCount(), 1) << "released when it is overwritten";
  deep = nested();
  deep = static_cast<const Variant&>(Variant(u"x"));
  EXPECT_EQ(bottom->RefCount(), 1) << "released when a copy overwrites it";
}

}  // namespace
}  // namespace tsruntime
