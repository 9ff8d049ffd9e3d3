// Late binding: invocation by name with positional and named arguments, coercion and
// written-back arguments.
#include <gtest/gtest.h>

#include <map>

#include "support/described_object.h"
#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

using testing::Described;
using testing::Outcome;
using testing::U8;

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
std::string Show(const Variant& v) {
  return v.isEmpty() ? "Empty" : U8(TypeName(v.type())) + " " + U8(ToString(v));
}

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
      {u"Repeat", {Pos(u"ab"), Pos(missing), Pos(u"+")}, "String ab+ab"},
      {u"Repeat", {Pos(missing)}, "error 449"},
      {u"Repeat", {Pos(u"a"), Pos(int16_t{1}), Pos(u"+"), Pos(int16_t{4})}, "error 450"},
      {u"Repeat", {Pos(u"ab"), Named(u"Sep", u"+")}, "error 448"},
      {u"Repeat", {Named(u"Text", u"b"), Pos(u"a")}, "error 448"},  // Text given twice
      {u"NoSuchMember", {}, "error 438"},
      // Coerced to the declared type, not in place; an object is its default member.
      {u"Repeat", {Pos(u"ab"), Pos(u"3")}, "String ab-ab-ab"},
      {u"Repeat", {Pos(u"ab"), Pos(u"x")}, "error 13"},
      {u"Repeat", {Pos(Described(u"ab")), Pos(Described(u"3"))}, "String ab-ab-ab"},
      // Written back in the declared type; by-value and left-out arguments stay as they were,
      // and a failing call writes nothing back.
      {u"Increment", {Pos(int32_t{5})}, "Long 6 | #1 Long 6"},
      {u"Increment", {Pos(u"41")}, "Long 42 | #1 Long 42"},
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
