// Variants and arrays: type codes, typed access, bounds, tables, ReDim Preserve and the
// value semantics of an array held in a Variant; late binding: invocation by name with
// positional and named arguments, coercion and written-back arguments.
#include <gtest/gtest.h>

#include <map>

#include "support/described_object.h"
#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Described;
using testing::Outcome;
using testing::U8;

std::string Show(int64_t n) { return std::to_string(n); }
std::string Show(const Variant& v) {
  return v.isEmpty() ? "Empty" : U8(TypeName(v.type())) + " " + U8(ToString(v));
}
std::string Show(const std::vector<String>& list) {
  std::string out;
  for (size_t i = 0; i < list.size(); ++i) out += (i ? "," : "") + U8(list[i]);
  return out;
}

TEST(Variants, CarryTypeCodesHaveValueSemanticsAndAreEmptyOnceMovedFrom) {
  const std::pair<Variant, int32_t> rows[] = {
      {Variant(), 0}, {Variant::Null(), 1}, {Variant(int16_t{1}), 2}, {Variant(int32_t{1}), 3},
      {Variant(1.0f), 4}, {Variant(1.0), 5}, {Variant(Currency{}), 6}, {Variant(Date{}), 7},
      {Variant(u"x"), 8}, {Variant::Nothing(), 9}, {Variant::Missing(), 10}, {Variant(true), 11},
      {Variant(Decimal{}), 14}, {Variant(uint8_t{1}), 17},
      {Variant(SafeArray(VarType::kLong)), 8195}, {Variant(SafeArray(VarType::kByte)), 8209},
  };
  for (const auto& [value, code] : rows) EXPECT_EQ(TypeCode(value.type()), code) << code;
  for (Variant moved : {Variant(SafeArray::FromStrings({u"x"})), Variant(u"abc"), Variant(1.5)}) {
    const Variant taken(std::move(moved));
    // NOLINTNEXTLINE: the moved-from state is a contract
    EXPECT_EQ(Show(moved), "Empty") << "after moving a " << U8(TypeName(taken.type()));
  }
  Variant array(SafeArray::FromStrings({u"x"}));
  Variant copy = array;
  copy.asArray().set(0, Variant(u"changed"));
  array.asArray().RedimPreserve(1);
  EXPECT_EQ(Show(array.asArray().ToStrings()), "x,") << "a copied array is independent";
  EXPECT_EQ(Show(copy.asArray().ToStrings()), "changed");
  EXPECT_EQ(Outcome([] { return Show(Variant(int16_t{5}).asLong()); }), "error 13");
  EXPECT_FALSE(Variant(int32_t{1}) == Variant(int16_t{1})) << "equal only in type and value";
}

TEST(SafeArrays, KeepBoundsTypesAndRaiseTheRuntimesErrors) {
  const SafeArray never(VarType::kString);
  SafeArray list(VarType::kLong, {Bounds{1, 3}});
  SafeArray table(VarType::kString, {Bounds{0, 2}, Bounds{1, 2}});
  const testing::Case cases[] = {
      {"never dimensioned: no lbound", [&] { return Show(never.lbound()); }, "error 9"},
      {"an empty list is 0 to -1",
       [] { return Show(SafeArray::FromStrings({}).lbound()) + " to " + Show(SafeArray::FromStrings({}).ubound()); },
       "0 to -1"},
      {"index above the bound", [&] { return Show(list.get(4)); }, "error 9"},
      {"one index on a table", [&] { return Show(table.get(0)); }, "error 9"},
      {"elements convert on store", [&] { list.set(3, Variant(u"7")); return Show(list.get(3)); },
       "Long 7"},
      {"Null into a String array", [&] { table.set(0, 1, Variant::Null()); return ""; },
       "error 94"},
      {"2^32 elements", [] { return Show(SafeArray(VarType::kLong, {Bounds{INT32_MIN, INT32_MAX}}).size()); }, "error 7"},
      {"one variant at the lowest bound",
       [] { return Show(SafeArray::FromVariants({Variant(1)}, INT32_MIN).get(INT32_MIN)); },
       "Long 1"},
      {"the last index that exists",
       [] { return Show(SafeArray::FromStrings({u"a"}, INT32_MAX).get(INT32_MAX)); }, "String a"},
  };
  for (const auto& c : cases) EXPECT_EQ(Outcome(c.run), c.expected) << c.what;
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
  EXPECT_EQ(Outcome([&] { kept.RedimPreserve(INT32_MAX); }), "error 7");
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
  deep = static_cast<const Variant&>(Variant(u"x"));
  EXPECT_EQ(bottom->RefCount(), 1) << "released when a copy overwrites it";
}

// A class that exists only for these tests, with one member for each way of passing
// arguments.
class clsDispatchProbe : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  String Repeat(const String& Text, int16_t Count, const String& Separator) const {
    String out;
    for (int16_t i = 0; i < Count; ++i) out += (i ? Separator : String()) + Text;
    return out;
  }
  int32_t Increment(int32_t& Value, int32_t By) { return Value += By; }
  bool TryHalve(int32_t Value, int32_t* Half) {
    if (Half) *Half = Value / 2;
    return Half != nullptr;
  }
  void LetTag(const String& Key, const String& value) { tags_[Key] = value; }

  std::map<String, String> tags_;
};

TSRUNTIME_DEFINE_CLASS(clsDispatchProbe) {
  using P = clsDispatchProbe;
  static const ClassInfo info =
      ClassBuilder<P>("clsDispatchProbe")
          .Method("Repeat", &P::Repeat, {"Text", Opt("Count", int16_t{2}), Opt("Separator", u"-")})
          .Method("Increment", &P::Increment, {Opt("Value", int32_t{10}), Opt("By", int32_t{1})})
          .Method("TryHalve", &P::TryHalve, {"Value", Opt("Half")})
          .Let("Tag", &P::LetTag, {Opt("Key", u"key"), "RHS"})
          .Build();
  return info;
}

Argument Pos(Variant v) { return Argument{String(), std::move(v)}; }
Argument Named(const char16_t* name, Variant v) { return Argument{name, std::move(v)}; }

struct CallRow {
  const char16_t* member;
  std::vector<Argument> args;
  // The result or "error N", then each argument the call changed ("#1 Long 6") and each
  // tag the probe holds afterwards ("key=v").
  const char* outcome;
  InvokeKind kind = InvokeKind::kCall;
};

TEST(Invoke, BindsCoercesWritesArgumentsBackAndKeepsErrors) {
  ScopedLocale l("ru_RU");
  const Variant missing = Variant::Missing();
  const InvokeKind let = InvokeKind::kLet;
  const CallRow rows[] = {
      // Optional arguments take their defaults when left out or Missing; names match in any
      // case, in any order, once each.
      {u"Repeat", {Pos(u"ab")}, "String ab-ab"},
      {u"Repeat", {Pos(u"ab"), Named(u"sEPARATOR", u"+")}, "String ab+ab"},
      {u"rEPEAT", {Named(u"Separator", u"/"), Named(u"Count", int32_t{3}), Named(u"Text", u"x")},
       "String x/x/x"},
      {u"Repeat", {Pos(missing)}, "error 449"},
      {u"Repeat", {Pos(u"a"), Pos(int16_t{1}), Pos(u"+"), Pos(int16_t{4})}, "error 450"},
      {u"Repeat", {Named(u"Text", u"b"), Pos(u"a")}, "error 448"},  // Text given twice
      {u"NoSuchMember", {}, "error 438"},
      // Coerced to the declared type, not in place; an object is its default member.
      {u"Repeat", {Pos(u"ab"), Pos(u"3")}, "String ab-ab-ab"},
      {u"Repeat", {Pos(u"ab"), Pos(u"x")}, "error 13"},
      {u"Repeat", {Pos(Described(u"ab")), Pos(Described(u"3"))}, "String ab-ab-ab"},
      // Written back in the declared type; by-value and left-out arguments stay as they were,
      // and a failing call writes nothing back.
      {u"Increment", {Pos(int32_t{5})}, "Long 6 | #1 Long 6"},
      {u"Increment", {Named(u"By", int32_t{10}), Named(u"value", 1.0)}, "Long 11 | #2 Long 11"},
      {u"TryHalve", {Pos(int32_t{9}), Named(u"Half", 0.0)}, "Boolean True | #2 Long 4"},
      {u"Increment", {Pos(missing)}, "Long 11"},
      {u"Increment", {Pos(int16_t{5}), Pos(u"x")}, "error 13"},
      // A let's value is its last positional argument, whatever optional index comes first.
      {u"Tag", {Pos(u"v")}, "Empty | key=v", let},
      {u"Tag", {Pos(u"ab"), Pos(u"w")}, "Empty | ab=w", let},
      {u"Tag", {Pos(u"w"), Named(u"Key", u"k")}, "Empty | k=w", let},
      {u"Repeat", {Pos(u"x")}, "error 438", let},
  };
  for (const CallRow& row : rows) {
    auto probe = New<clsDispatchProbe>();
    std::vector<Argument> args = row.args;
    std::string got = Outcome([&] { return Show(Invoke(*probe, row.member, row.kind, args)); });
    for (size_t i = 0; i < args.size(); ++i) {
      if (args[i].value == row.args[i].value) continue;
      got += " | #" + std::to_string(i + 1) + " " + Show(args[i].value);
    }
    for (const auto& [key, value] : probe->tags_) got += " | " + U8(key) + "=" + U8(value);
    EXPECT_EQ(got, row.outcome) << "row " << &row - rows;
  }
}

}  // namespace
}  // namespace tsruntime
