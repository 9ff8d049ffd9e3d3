// Variants and arrays: type codes, typed access, bounds, tables, ReDim Preserve and the
// value semantics of an array held in a Variant.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Outcome;
using testing::RaisedNumber;
using testing::U8;

TEST(VariantTypes, CarryTheHostRuntimesTypeCodes) {
  const std::tuple<const char*, Variant, int32_t, bool> rows[] = {
      {"Empty", Variant(), 0, false},
      {"Null", Variant::Null(), 1, false},
      {"Integer", Variant(int16_t{1}), 2, true},
      {"Long", Variant(int32_t{1}), 3, true},
      {"Single", Variant(1.0f), 4, true},
      {"Double", Variant(1.0), 5, true},
      {"Currency", Variant(Currency{1}), 6, true},
      {"Date", Variant(Date{1.0}), 7, false},
      {"String", Variant(u"x"), 8, false},
      {"Nothing", Variant::Nothing(), 9, false},
      {"an object", Variant(New<clsZKRunTimeLib>()), 9, false},
      {"Missing", Variant::Missing(), 10, false},
      {"Boolean", Variant(true), 11, false},
      {"Decimal", Variant(Decimal{}), 14, true},
      {"Byte", Variant(uint8_t{1}), 17, true},
      {"a String array", Variant(SafeArray(VarType::kString, {Bounds{0, 1}})), 8200, false},
      {"a Variant array", Variant(SafeArray::FromVariants({Variant()})), 8204, false},
      {"a byte array", Variant(SafeArray::FromBytes(std::vector<uint8_t>{1, 2})), 8209, false},
      {"a never-dimensioned Long array", Variant(SafeArray(VarType::kLong)), 8195, false},
  };
  for (const auto& [what, value, code, numeric] : rows) {
    EXPECT_EQ(TypeCode(value.type()), code) << what;
    EXPECT_EQ(value.isNumeric(), numeric) << what;
    EXPECT_EQ(value.isMissing(), code == 10) << what;
    EXPECT_EQ(value.isArray(), code >= 8192) << what;
  }
}

TEST(VariantTypes, TypedAccessRaisesTypeMismatchForAnotherType) {
  const Variant text(u"5");
  EXPECT_EQ(RaisedNumber([&] { (void)text.asLong(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { (void)text.asArray(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { (void)Variant(int16_t{5}).asLong(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { (void)Variant().asString(); }), 13);
  EXPECT_EQ(U8(text.asString()), "5");
  // An Error value that is not the missing marker is not Missing.
  EXPECT_FALSE(Variant(ErrorValue{5}).isMissing());
}

TEST(VariantTypes, EqualityIsExactIdentityOfTypeAndValue) {
  const Variant object = Variant(New<clsZKRunTimeLib>());
  EXPECT_EQ(Variant(int32_t{1}), Variant(int32_t{1}));
  EXPECT_NE(Variant(int32_t{1}), Variant(int16_t{1}));
  EXPECT_NE(Variant(u"a"), Variant(u"A"));
  EXPECT_EQ(Variant(std::nan("")), Variant(std::nan("")));
  EXPECT_EQ(Variant(Decimal::ParsePlain("1.50").value()), Variant(Decimal::ParsePlain("1.5").value()));
  EXPECT_EQ(object, object);
  EXPECT_NE(object, Variant(New<clsZKRunTimeLib>()));
  EXPECT_EQ(Variant::Null(), Variant::Null());
  EXPECT_NE(Variant(), Variant::Null());
}

TEST(ArrayDimensions, NeverDimensionedDiffersFromDimensionedEmpty) {
  const SafeArray never(VarType::kString);
  const SafeArray zero_to_minus_one(VarType::kString, {Bounds{0, -1}});
  const SafeArray minus_one_to_minus_one(VarType::kString, {Bounds{-1, -1}});

  EXPECT_FALSE(never.isDimensioned());
  EXPECT_EQ(never.dimensions(), 0);
  EXPECT_EQ(RaisedNumber([&] { never.lbound(); }), 9);
  EXPECT_EQ(RaisedNumber([&] { never.ubound(); }), 9);
  EXPECT_EQ(never.size(), 0);

  EXPECT_TRUE(zero_to_minus_one.isDimensioned());
  EXPECT_EQ(zero_to_minus_one.lbound(), 0);
  EXPECT_EQ(zero_to_minus_one.ubound(), -1);
  EXPECT_EQ(zero_to_minus_one.size(), 0);

  EXPECT_EQ(minus_one_to_minus_one.lbound(), -1);
  EXPECT_EQ(minus_one_to_minus_one.ubound(), -1);
  EXPECT_EQ(minus_one_to_minus_one.size(), 1);

  EXPECT_FALSE(never == zero_to_minus_one);
  EXPECT_FALSE(zero_to_minus_one == minus_one_to_minus_one);
  for (const SafeArray* a : {&never, &zero_to_minus_one}) {
    EXPECT_EQ(RaisedNumber([&] { a->get(0); }), 9);
    EXPECT_EQ(RaisedNumber([&] { a->get(-1); }), 9);
  }
}

TEST(ArrayDimensions, EmptyListsGiveZeroToMinusOne) {
  const SafeArray strings = SafeArray::FromStrings({});
  EXPECT_TRUE(strings.isDimensioned());
  EXPECT_EQ(strings.lbound(), 0);
  EXPECT_EQ(strings.ubound(), -1);
  const SafeArray bytes = SafeArray::FromBytes({}, 1);
  EXPECT_EQ(bytes.lbound(), 1);
  EXPECT_EQ(bytes.ubound(), 0);
  EXPECT_EQ(bytes.type(), ArrayOf(VarType::kByte));
}

TEST(ArrayDimensions, RefuseSizesNoArrayCanHold) {
  const Bounds all{INT32_MIN, INT32_MAX};
  const std::tuple<const char*, std::function<void()>, int32_t> rows[] = {
      {"2^32 elements", [&] { SafeArray(VarType::kLong, {all}); }, 7},
      {"a product past 64 bits", [&] { SafeArray(VarType::kByte, {all, all, all}); }, 7},
      {"strings past the top bound", [] { SafeArray::FromStrings({u"a", u"b"}, INT32_MAX); }, 6},
      {"bytes past the top bound",
       [] { SafeArray::FromBytes(std::vector<uint8_t>(2), INT32_MAX); }, 6},
  };
  for (const auto& [what, body, number] : rows) EXPECT_EQ(RaisedNumber(body), number) << what;

  SafeArray list = SafeArray::FromStrings({u"kept"}, INT32_MIN);
  EXPECT_EQ(RaisedNumber([&] { list.RedimPreserve(INT32_MAX); }), 7);
  EXPECT_EQ(list.ubound(), INT32_MIN) << "a refused ReDim leaves the array as it was";
  EXPECT_EQ(U8(list.get(INT32_MIN).asString()), "kept");
  EXPECT_EQ(SafeArray::FromStrings({u"last"}, INT32_MAX).ubound(), INT32_MAX);
}

TEST(ArrayAccess, RaisesSubscriptOutOfRangeOutsideTheBounds) {
  SafeArray list(VarType::kLong, {Bounds{1, 3}});
  SafeArray table(VarType::kString, {Bounds{0, 2}, Bounds{-1, 1}});
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"index below the lower bound", [&] { list.get(0); }},
      {"index above the upper bound", [&] { list.get(4); }},
      {"setting above the upper bound", [&] { list.set(4, Variant(int32_t{1})); }},
      {"at above the upper bound", [&] { list.at(4); }},
      {"two indexes on a list", [&] { list.get(1, 1); }},
      {"one index on a table", [&] { table.get(0); }},
      {"column above the bound", [&] { table.get(3, 0); }},
      {"row below the bound", [&] { table.get(0, -2); }},
      {"setting a row above the bound", [&] { table.set(0, 2, Variant(u"x")); }},
      {"lbound of dimension 0", [&] { list.lbound(0); }},
      {"ubound of dimension 2 of a list", [&] { list.ubound(2); }},
      {"lbound of dimension 3 of a table", [&] { table.lbound(3); }},
  };
  for (const auto& [what, body] : rows) EXPECT_EQ(RaisedNumber(body), 9) << what;
  EXPECT_EQ(RaisedNumber([&] { list.get(1); list.get(3); table.get(2, 1); table.get(0, -1); }),
            0);
}

TEST(ArrayTables, AreIndexedColumnThenRowWithTheColumnVaryingFastest) {
  SafeArray table(VarType::kString, {Bounds{0, 2}, Bounds{1, 2}});
  EXPECT_EQ(table.lbound(1), 0);
  EXPECT_EQ(table.ubound(1), 2);
  EXPECT_EQ(table.lbound(2), 1);
  EXPECT_EQ(table.ubound(2), 2);
  for (int32_t row = 1; row <= 2; ++row) {
    for (int32_t column = 0; column <= 2; ++column) {
      table.set(column, row, Variant(FromAscii(std::to_string(column) + "," + std::to_string(row))));
    }
  }
  std::vector<std::string> laid_out;
  for (const Variant& v : table.elements()) laid_out.push_back(U8(v.asString()));
  EXPECT_EQ(laid_out, (std::vector<std::string>{"0,1", "1,1", "2,1", "0,2", "1,2", "2,2"}));
  EXPECT_EQ(U8(table.get(2, 1).asString()), "2,1");
  EXPECT_EQ(U8(table.at(1, 2).asString()), "1,2");
}

TEST(ArrayElements, StartAsTheirTypesZeroAndConvertOnStore) {
  const std::tuple<VarType, VarType, const char*> zeros[] = {
      {VarType::kString, VarType::kString, ""},    {VarType::kLong, VarType::kLong, "0"},
      {VarType::kInteger, VarType::kInteger, "0"}, {VarType::kDouble, VarType::kDouble, "0"},
      {VarType::kBoolean, VarType::kBoolean, "False"},
      {VarType::kDate, VarType::kDate, "1899-12-30"},
      {VarType::kCurrency, VarType::kCurrency, "0"}, {VarType::kVariant, VarType::kEmpty, ""},
      {VarType::kByte, VarType::kByte, "0"},
  };
  for (auto [element, held, text] : zeros) {
    const SafeArray a(element, {Bounds{0, 0}});
    EXPECT_EQ(a.get(0).type(), held) << U8(TypeName(element));
    EXPECT_EQ(U8(ToString(a.get(0))), text) << U8(TypeName(element));
  }
  EXPECT_TRUE(SafeArray(VarType::kObject, {Bounds{0, 0}}).get(0).isObject());

  struct Row {
    const char* what;
    VarType element;
    Variant value;
    const char* stored;  // ToString of what was stored, or "error N"
  };
  const Row rows[] = {
      {"a Long into a String array", VarType::kString, Variant(int32_t{5}), "5"},
      {"text into a Long array", VarType::kLong, Variant(u"7"), "7"},
      {"bad text into a Long array", VarType::kLong, Variant(u"x"), "error 13"},
      {"40000 into an Integer array", VarType::kInteger, Variant(int32_t{40000}), "error 6"},
      {"Null into a String array", VarType::kString, Variant::Null(), "error 94"},
      {"256 into a byte array", VarType::kByte, Variant(int32_t{256}), "error 6"},
      {"2.5 into a byte array", VarType::kByte, Variant(2.5), "2"},
      {"an object into a Long array", VarType::kLong, Variant::Nothing(), "error 13"},
  };
  for (const Row& row : rows) {
    SafeArray a(row.element, {Bounds{0, 0}});
    EXPECT_EQ(Outcome([&] {
                a.set(0, row.value);
                return U8(ToString(a.get(0)));
              }),
              row.stored)
        << row.what;
  }
  // A Variant array keeps Null as it is.
  SafeArray variants(VarType::kVariant, {Bounds{0, 0}});
  variants.set(0, Variant::Null());
  EXPECT_TRUE(variants.get(0).isNull());
}

TEST(ArrayElements, ByteArraysKeepRawBytes) {
  const std::vector<uint8_t> data = {0, 0x80, 0xFF};
  SafeArray a = SafeArray::FromBytes(data, 1);
  EXPECT_EQ(a.bytes(), data);
  EXPECT_EQ(a.get(2).type(), VarType::kByte);
  EXPECT_EQ(a.get(3).asByte(), 0xFF);
  a.set(1, Variant(int16_t{65}));
  EXPECT_EQ(a.bytes()[0], 65);
  EXPECT_EQ(RaisedNumber([&] { a.at(1); }), 13);
  EXPECT_EQ(a.ToStrings(), (std::vector<String>{u"65", u"128", u"255"}));
}

TEST(ArrayRedim, PreserveKeepsValuesAndTheLowerBound) {
  SafeArray never(VarType::kString);
  never.RedimPreserve(1);
  EXPECT_EQ(never.lbound(), 0);
  EXPECT_EQ(never.ubound(), 1);
  EXPECT_EQ(never.ToStrings(), (std::vector<String>{u"", u""}));

  SafeArray list = SafeArray::FromStrings({u"a", u"b", u"c"}, 5);
  list.RedimPreserve(8);
  EXPECT_EQ(list.lbound(), 5);
  EXPECT_EQ(list.ToStrings(), (std::vector<String>{u"a", u"b", u"c", u""}));
  list.RedimPreserve(5);
  EXPECT_EQ(list.ToStrings(), (std::vector<String>{u"a"}));
  list.RedimPreserve(4);
  EXPECT_TRUE(list.isDimensioned());
  EXPECT_EQ(list.size(), 0);

  SafeArray table(VarType::kLong, {Bounds{0, 1}, Bounds{0, 0}});
  table.set(0, 0, Variant(int32_t{10}));
  table.set(1, 0, Variant(int32_t{11}));
  table.RedimPreserve(2);  // adds rows
  EXPECT_EQ(table.ubound(2), 2);
  EXPECT_EQ(table.get(0, 0).asLong(), 10);
  EXPECT_EQ(table.get(1, 0).asLong(), 11);
  EXPECT_EQ(table.get(1, 2).asLong(), 0);

  SafeArray bytes = SafeArray::FromBytes(std::vector<uint8_t>{7});
  bytes.RedimPreserve(2);
  EXPECT_EQ(bytes.bytes(), (std::vector<uint8_t>{7, 0, 0}));
}

TEST(ArrayValues, AnArrayInAVariantIsCopiedWithIt) {
  Variant a(SafeArray::FromStrings({u"x", u"y"}));
  Variant b = a;
  b.asArray().set(0, Variant(u"changed"));
  EXPECT_EQ(U8(a.asArray().get(0).asString()), "x");
  EXPECT_NE(a, b);

  Variant c;
  c = a;
  EXPECT_EQ(c, a);
  a.asArray().RedimPreserve(5);
  EXPECT_EQ(c.asArray().ubound(), 1);

  // Arrays nested in a Variant array are values too.
  SafeArray outer = SafeArray::FromVariants({a});
  Variant copy(outer);
  outer.at(0).asArray().set(0, Variant(u"inner"));
  EXPECT_EQ(U8(copy.asArray().get(0).asArray().get(0).asString()), "x");
}

TEST(ArrayValues, AMovedFromVariantIsEmpty) {
  Variant array(SafeArray::FromStrings({u"x"}));
  Variant taken(std::move(array));
  EXPECT_EQ(array.type(), VarType::kEmpty);  // NOLINT: the moved-from state is a contract
  EXPECT_EQ(taken.asArray().get(0), Variant(u"x"));
  Variant copy = array;
  EXPECT_TRUE(copy.isEmpty());
  Variant text(u"abc");
  taken = std::move(text);
  EXPECT_EQ(text.type(), VarType::kEmpty);  // NOLINT
  EXPECT_EQ(taken, Variant(u"abc"));
}

TEST(ArrayValues, ConvertToStringsElementByElement) {
  SafeArray a = SafeArray::FromVariants({Variant(int32_t{1}), Variant(u"b"), Variant(true)}, -1);
  EXPECT_EQ(a.lbound(), -1);
  EXPECT_EQ(a.ToStrings(), (std::vector<String>{u"1", u"b", u"True"}));
  SafeArray with_null = SafeArray::FromVariants({Variant::Null()});
  EXPECT_EQ(RaisedNumber([&] { with_null.ToStrings(); }), 94);
}

}  // namespace
}  // namespace tsruntime
