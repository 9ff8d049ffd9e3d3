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

TEST(VariantTypes, CarryTheHostRuntimesTypeCodes) {
  const std::pair<Variant, int32_t> rows[] = {
      {Variant(), 0},           {Variant::Null(), 1},          {Variant(int16_t{1}), 2},
      {Variant(int32_t{1}), 3}, {Variant(1.0f), 4},            {Variant(1.0), 5},
      {Variant(Currency{1}), 6}, {Variant(Date{1.0}), 7},      {Variant(u"x"), 8},
      {Variant::Nothing(), 9},  {Variant::Missing(), 10},      {Variant(true), 11},
      {Variant(Decimal{}), 14}, {Variant(uint8_t{1}), 17},
      {Variant(SafeArray(VarType::kString, {Bounds{0, 1}})), 8200},
      {Variant(SafeArray::FromBytes(std::vector<uint8_t>{1})), 8209},
      {Variant(SafeArray(VarType::kLong)), 8195},
  };
  for (const auto& [value, code] : rows) {
    EXPECT_EQ(TypeCode(value.type()), code) << U8(TypeName(value.type()));
    EXPECT_EQ(value.isNumeric(), (code >= 2 && code <= 6) || code == 14 || code == 17) << code;
  }
}

TEST(Variants, HaveValueSemantics) {
  Variant array(SafeArray::FromStrings({u"x", u"y"}));
  Variant text(u"abc");
  testing::CheckCases({
      {"an Integer read as a Long", [] { return Show(Variant(int16_t{5}).asLong()); }, "error 13"},
      {"a moved-from array Variant is Empty", [&] {
         Variant taken(std::move(array));
         return Show(array) + "|" + Show(taken.asArray().ToStrings());  // NOLINT: moved-from
       }, "Empty |x,y"},
      {"a moved-from text Variant is Empty", [&] {
         Variant taken = std::move(text);
         return Show(text) + "|" + Show(taken);  // NOLINT: moved-from
       }, "Empty |String abc"},
      {"a copied array is independent", [] {
         Variant a(SafeArray::FromStrings({u"x"}));
         Variant b = a;
         b.asArray().set(0, Variant(u"changed"));
         a.asArray().RedimPreserve(1);
         return Show(a.asArray().ToStrings()) + "|" + Show(b.asArray().ToStrings());
       }, "x,|changed"},
  });
  EXPECT_NE(Variant(int32_t{1}), Variant(int16_t{1})) << "equality is identity of type and value";
}

TEST(SafeArrays, KeepBoundsTypesAndRaiseTheRuntimesErrors) {
  const SafeArray never(VarType::kString);
  const SafeArray none(VarType::kString, {Bounds{0, -1}});
  const SafeArray one(VarType::kString, {Bounds{-1, -1}});
  SafeArray list(VarType::kLong, {Bounds{1, 3}});
  SafeArray table(VarType::kString, {Bounds{0, 2}, Bounds{1, 2}});
  const Bounds all{INT32_MIN, INT32_MAX};
  testing::CheckCases({
      {"never dimensioned: no lbound", [&] { return Show(never.lbound()); }, "error 9"},
      {"never dimensioned: no element", [&] { return Show(never.get(0)); }, "error 9"},
      {"0 to -1: bounds", [&] { return Show(none.lbound()) + Show(none.ubound()); }, "0-1"},
      {"0 to -1: no element", [&] { return Show(none.get(-1)); }, "error 9"},
      {"0 to -1 differs from never", [&] { return never == none ? "same" : "differs"; },
       "differs"},
      {"-1 to -1: one element", [&] { return Show(one.get(-1)); }, "String "},
      {"an empty list is 0 to -1", [] { return Show(SafeArray::FromStrings({}).ubound()); }, "-1"},
      {"index above the bound", [&] { return Show(list.get(4)); }, "error 9"},
      {"two indexes on a list", [&] { return Show(list.get(1, 1)); }, "error 9"},
      {"one index on a table", [&] { return Show(table.get(0)); }, "error 9"},
      {"ubound of dimension 3 of a table", [&] { return Show(table.ubound(3)); }, "error 9"},
      {"elements start as zero", [&] { return Show(list.get(3)); }, "Long 0"},
      {"elements convert on store", [&] { return list.set(2, Variant(u"7")), Show(list.get(2)); },
       "Long 7"},
      {"Null into a String array", [&] { return table.set(0, 1, Variant::Null()), ""; },
       "error 94"},
      {"2^32 elements", [&] { return SafeArray(VarType::kLong, {all}), ""; }, "error 7"},
      {"a size past 64 bits", [&] { return SafeArray(VarType::kByte, {all, all, all}), ""; },
       "error 7"},
      {"strings past the top bound",
       [] { return SafeArray::FromStrings({u"a", u"b"}, INT32_MAX), ""; }, "error 6"},
      {"bytes past the top bound",
       [] { return SafeArray::FromBytes(std::vector<uint8_t>(2), INT32_MAX), ""; }, "error 6"},
      {"the last index that exists",
       [] { return Show(SafeArray::FromStrings({u"a"}, INT32_MAX).get(INT32_MAX)); }, "String a"},
  });
}

TEST(SafeArrays, LayOutTablesColumnFirstAndRedimPreserveKeepsValues) {
  SafeArray table(VarType::kString, {Bounds{0, 2}, Bounds{1, 2}});
  for (int32_t row = 1; row <= 2; ++row) {
    for (int32_t column = 0; column <= 2; ++column) {
      table.set(column, row, Variant(FromAscii(std::to_string(column) + std::to_string(row))));
    }
  }
  EXPECT_EQ(Show(table.ToStrings()), "01,11,21,02,12,22");
  table.RedimPreserve(3);
  EXPECT_EQ(Show(table.ToStrings()), "01,11,21,02,12,22,,,") << "ReDim adds rows";

  SafeArray never(VarType::kString);
  never.RedimPreserve(1);
  EXPECT_EQ(Show(never.lbound()) + " " + Show(never.ToStrings()), "0 ,");
  SafeArray list = SafeArray::FromStrings({u"a", u"b"}, 5);
  list.RedimPreserve(5);
  EXPECT_EQ(Show(list.lbound()) + " " + Show(list.ToStrings()), "5 a");
  list.RedimPreserve(4);
  EXPECT_TRUE(list.isDimensioned() && list.size() == 0);
  SafeArray kept = SafeArray::FromStrings({u"kept"}, INT32_MIN);
  EXPECT_EQ(testing::RaisedNumber([&] { kept.RedimPreserve(INT32_MAX); }), 7);
  EXPECT_EQ(Show(kept.ToStrings()), "kept") << "a refused ReDim leaves the array as it was";
  SafeArray bytes = SafeArray::FromBytes(std::vector<uint8_t>{7, 0xFF}, 1);
  bytes.RedimPreserve(3);
  EXPECT_EQ(bytes.bytes(), (std::vector<uint8_t>{7, 0xFF, 0}));
  EXPECT_EQ(Show(bytes.get(2)), "Byte 255");
}

}  // namespace
}  // namespace tsruntime
