// Late binding: the class registry, invocation by name with positional and named
// arguments, coercion, written-back arguments, properties, events and type information.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/enumerator.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

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
  int32_t TakeLong(int32_t Value) const { return Value; }
  int16_t TakeInteger(int16_t Value) const { return Value; }
  void Increment(int32_t& Value, int32_t By) { Value += By; }
  void Swap(String& First, String& Second) { std::swap(First, Second); }
  int32_t Bump(int32_t& Counter) { return ++Counter; }
  bool TryHalve(int32_t Value, int32_t* Half) {
    if (!Half) return false;
    *Half = Value / 2;
    return true;
  }
  String Describe(const Variant& Anything) const {
    return Anything.isMissing() ? u"Missing" : TypeName(Anything.type());
  }
  int32_t CountStrings(const SafeArray& Items) const { return static_cast<int32_t>(Items.size()); }

  String Caption() const { return caption_; }
  void LetCaption(const String& value) { caption_ = value; }
  Ref<clsDispatchProbe> Partner() const { return partner_; }
  void SetPartner(Ref<clsDispatchProbe> value) { partner_ = std::move(value); }
  String Item(int32_t Index) const {
    auto it = items_.find(Index);
    return it == items_.end() ? String() : it->second;
  }
  void LetItem(int32_t Index, const String& value) { items_[Index] = value; }
  String Tag(const String& Key) const {
    auto it = tags_.find(Key);
    return Key + u"=" + (it == tags_.end() ? String() : it->second);
  }
  void LetTag(const String& Key, const String& value) { tags_[Key] = value; }

  void Fire(const String& What) {
    std::vector<Variant> args{Variant(What)};
    RaiseEvent(u"Changed", args);
  }
  void Fail() {
    throw Error(xcZKERR_STRING_INSTRRIGHT, u"ZKRuntimeLib.clsDispatchProbe.Fail", u"Отказ",
                u"probe.chm", 42);
  }

 private:
  String caption_;
  Ref<clsDispatchProbe> partner_;
  std::map<int32_t, String> items_;
  std::map<String, String> tags_;
};

TSRUNTIME_DEFINE_CLASS(clsDispatchProbe) {
  using P = clsDispatchProbe;
  static const ClassInfo info =
      ClassBuilder<P>("clsDispatchProbe")
          .Method("Repeat", &P::Repeat, {"Text", Opt("Count", int16_t{2}), Opt("Separator", u"-")})
          .Method("TakeLong", &P::TakeLong, {"Value"})
          .Method("TakeInteger", &P::TakeInteger, {"Value"})
          .Method("Increment", &P::Increment, {"Value", Opt("By", int32_t{1})})
          .Method("Swap", &P::Swap, {"First", "Second"})
          .Method("Bump", &P::Bump, {Opt("Counter", int32_t{10})})
          .Method("TryHalve", &P::TryHalve, {"Value", Opt("Half")})
          .Method("Describe", &P::Describe, {Opt("Anything")})
          .Method("CountStrings", &P::CountStrings,
                  {Typed("Items", ArrayOf(VarType::kString))})
          .Get("Caption", &P::Caption)
          .Let("Caption", &P::LetCaption, {"RHS"})
          .Get("Partner", &P::Partner)
          .Set("Partner", &P::SetPartner, {"RHS"})
          .Get("Item", &P::Item, {"Index"})
          .Let("Item", &P::LetItem, {"Index", "RHS"})
          .Get("Tag", &P::Tag, {Opt("Key", u"key")})
          .Let("Tag", &P::LetTag, {Opt("Key", u"key"), "RHS"})
          .Method("Fire", &P::Fire, {"What"})
          .Method("Fail", &P::Fail)
          .Default("Item")
          .Event("Changed", {"ChangedItem"})
          .Build();
  return info;
}

Argument Pos(Variant v) { return Argument{String(), std::move(v)}; }
Argument Named(const char16_t* name, Variant v) { return Argument{name, std::move(v)}; }

// The result of a late-bound call as text, or "error N".
std::string CallText(Object& o, StringView member, std::vector<Argument> args,
                     InvokeKind kind = InvokeKind::kCall) {
  return Outcome([&] { return U8(ToString(Invoke(o, member, kind, args))); });
}

TEST(ClassRegistry, FindsClassesByProgIdOrBareNameInAnyCase) {
  const std::pair<const char16_t*, const char*> rows[] = {
      {u"TSRuntimeLib.clsDispatchProbe", "clsDispatchProbe"},
      {u"tsruntimelib.CLSDISPATCHPROBE", "clsDispatchProbe"},
      {u"clsDispatchProbe", "clsDispatchProbe"},
      {u"CLSDISPATCHPROBE", "clsDispatchProbe"},
      {u"TSRuntimeLib.clsZKRunTimeLib", "clsZKRunTimeLib"},
      {u"TSRuntimeLib.", "error 429"},
      {u"", "error 429"},
      {u"TSRuntimeLib.NoSuchClass", "error 429"},
      {u"Other.clsDispatchProbe", "error 429"},
      {u"clsDispatchProb", "error 429"},
      // Hosts receive enumerators but cannot create them.
      {u"TSRuntimeLib.Enumerator", "error 429"},
  };
  for (auto [name, created] : rows) {
    EXPECT_EQ(Outcome([&] { return U8(CreateObject(name)->classInfo().name); }), created)
        << "CreateObject(\"" << U8(name) << "\")";
  }
  ASSERT_NE(FindClass(u"tsruntimelib.enumerator"), nullptr);
  EXPECT_FALSE(FindClass(u"tsruntimelib.enumerator")->creatable);
}

TEST(ClassRegistry, ListsClassesSortedByName) {
  const auto classes = RegisteredClasses();
  EXPECT_TRUE(std::is_sorted(classes.begin(), classes.end(),
                             [](auto* a, auto* b) { return a->name < b->name; }));
  for (const char16_t* name : {u"clsDispatchProbe", u"clsZKRunTimeLib", u"Enumerator"}) {
    EXPECT_EQ(std::count_if(classes.begin(), classes.end(), [&](auto* c) { return c->name == name; }),
              1)
        << U8(name);
  }
  EXPECT_EQ(U8(FindClass(u"clsDispatchProbe")->progId()), "TSRuntimeLib.clsDispatchProbe");
}

struct CallRow {
  const char* what;
  const char16_t* member;
  std::vector<Argument> args;
  const char* result;  // the result as text, or "error N"
};

TEST(Invoke, BindsPositionalAndNamedArgumentsAndFillsDefaults) {
  auto probe = New<clsDispatchProbe>();
  const Variant missing = Variant::Missing();
  const CallRow rows[] = {
      {"defaults for both optionals", u"Repeat", {Pos(u"ab")}, "ab-ab"},
      {"a member name in lower case", u"repeat", {Pos(u"ab")}, "ab-ab"},
      {"a member name in upper case", u"REPEAT", {Pos(u"ab"), Pos(int16_t{3})}, "ab-ab-ab"},
      {"every argument by position", u"Repeat", {Pos(u"ab"), Pos(int16_t{3}), Pos(u"+")},
       "ab+ab+ab"},
      {"a named argument skipping one", u"Repeat", {Pos(u"ab"), Named(u"Separator", u"+")},
       "ab+ab"},
      {"a named argument in another case", u"Repeat", {Pos(u"ab"), Named(u"sEPARATOR", u"+")},
       "ab+ab"},
      {"only named arguments, out of order", u"Repeat",
       {Named(u"Separator", u"/"), Named(u"Count", int32_t{3}), Named(u"Text", u"x")}, "x/x/x"},
      {"Missing counts as left out", u"Repeat", {Pos(u"ab"), Pos(missing), Pos(u"+")}, "ab+ab"},
      {"a named Missing counts as left out", u"Repeat",
       {Pos(u"ab"), Named(u"Count", missing)}, "ab-ab"},
      {"Missing for a required argument", u"Repeat", {Pos(missing)}, "error 449"},
      {"no arguments for a required one", u"Repeat", {}, "error 449"},
      {"one argument too many", u"Repeat",
       {Pos(u"a"), Pos(int16_t{1}), Pos(u"+"), Pos(int16_t{4})}, "error 450"},
      {"an argument for a member without parameters", u"Caption", {Pos(int16_t{1})}, "error 450"},
      {"an unknown argument name", u"Repeat", {Pos(u"ab"), Named(u"Sep", u"+")}, "error 448"},
      {"the same name twice", u"Repeat", {Named(u"Text", u"a"), Named(u"text", u"b")},
       "error 448"},
      {"a name for a parameter given by position", u"Repeat",
       {Pos(u"a"), Named(u"Text", u"b")}, "error 448"},
      {"a position for a parameter given by name", u"Repeat",
       {Named(u"Text", u"b"), Pos(u"a")}, "error 448"},
      {"an unknown member", u"NoSuchMember", {}, "error 438"},
      {"an empty member name", u"", {}, "error 438"},
      {"an event name", u"Changed", {}, "error 438"},
  };
  for (const CallRow& row : rows) {
    EXPECT_EQ(CallText(*probe, row.member, row.args), row.result) << row.what;
  }
}

TEST(Invoke, CoercesArgumentsToTheDeclaredTypes) {
  ScopedLocale l("ru_RU");
  auto probe = New<clsDispatchProbe>();
  const CallRow rows[] = {
      {"text 5 to Long", u"TakeLong", {Pos(u"5")}, "5"},
      {"text x to Long", u"TakeLong", {Pos(u"x")}, "error 13"},
      {"text 1,5 to Long", u"TakeLong", {Pos(u"1,5")}, "2"},
      {"Double 2.5 to Long", u"TakeLong", {Pos(2.5)}, "2"},
      {"Boolean True to Long", u"TakeLong", {Pos(true)}, "-1"},
      {"Empty to Long", u"TakeLong", {Pos(Variant())}, "0"},
      {"Null to Long", u"TakeLong", {Pos(Variant::Null())}, "error 94"},
      {"Nothing to Long", u"TakeLong", {Pos(Variant::Nothing())}, "error 13"},
      {"an array to Long", u"TakeLong", {Pos(SafeArray::FromStrings({u"1"}))}, "error 13"},
      {"Long 40000 to Integer", u"TakeInteger", {Pos(int32_t{40000})}, "error 6"},
      {"Currency 3.5 to Integer", u"TakeInteger", {Pos(Currency{35000})}, "4"},
      {"text 3 to Integer", u"Repeat", {Pos(u"ab"), Pos(u"3")}, "ab-ab-ab"},
      {"a number to String", u"Repeat", {Pos(int32_t{12})}, "12-12"},
      {"Double 0.5 to String", u"Repeat", {Pos(0.5), Pos(int16_t{1})}, "0,5"},
      {"Null to String", u"Repeat", {Pos(Variant::Null())}, "error 94"},
      {"a String array", u"CountStrings", {Pos(SafeArray::FromStrings({u"a", u"b"}))}, "2"},
      {"text where an array belongs", u"CountStrings", {Pos(u"a")}, "error 13"},
      {"a Variant left out", u"Describe", {}, "Missing"},
      {"a Variant given Missing", u"Describe", {Pos(Variant::Missing())}, "Missing"},
      {"a Variant given a Long", u"Describe", {Pos(int32_t{5})}, "Long"},
      {"a Variant given Null", u"Describe", {Pos(Variant::Null())}, "Null"},
      {"a Variant given Empty", u"Describe", {Pos(Variant())}, "Empty"},
      {"an optional pointer left out", u"TryHalve", {Pos(int32_t{9})}, "False"},
      {"an optional pointer given Missing", u"TryHalve",
       {Pos(int32_t{9}), Pos(Variant::Missing())}, "False"},
      {"an optional pointer given a value", u"TryHalve", {Pos(int32_t{9}), Pos(int32_t{0})},
       "True"},
  };
  for (const CallRow& row : rows) {
    EXPECT_EQ(CallText(*probe, row.member, row.args), row.result) << row.what;
  }
}

TEST(Invoke, WritesArgumentsBackToTheCallersVariables) {
  auto probe = New<clsDispatchProbe>();
  std::vector<Argument> args = {Pos(int32_t{5})};
  Invoke(*probe, u"Increment", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(int32_t{6}));

  args = {Pos(u"41")};  // converted to the declared type on the way back
  Invoke(*probe, u"increment", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(int32_t{42}));

  args = {Named(u"By", int32_t{10}), Named(u"value", int32_t{1})};
  Invoke(*probe, u"Increment", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(int32_t{10})) << "a by-value argument stays as it was";
  EXPECT_EQ(args[1].value, Variant(int32_t{11}));

  args = {Pos(u"a"), Pos(u"b")};
  Invoke(*probe, u"Swap", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(u"b"));
  EXPECT_EQ(args[1].value, Variant(u"a"));

  args = {Named(u"Second", u"y"), Named(u"First", u"x")};
  Invoke(*probe, u"Swap", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(u"x"));
  EXPECT_EQ(args[1].value, Variant(u"y"));

  args = {Pos(int32_t{9}), Named(u"Half", Variant())};
  EXPECT_EQ(Invoke(*probe, u"TryHalve", InvokeKind::kCall, args), Variant(true));
  EXPECT_EQ(args[1].value, Variant(int32_t{4}));

  args = {Pos(Variant::Missing())};  // left out: the default is used, nothing written
  EXPECT_EQ(Invoke(*probe, u"Bump", InvokeKind::kCall, args), Variant(int32_t{11}));
  EXPECT_TRUE(args[0].value.isMissing());

  args = {Pos(u"3"), Pos(u"3")};
  Invoke(*probe, u"Repeat", InvokeKind::kCall, args);
  EXPECT_EQ(args[1].value, Variant(u"3")) << "by-value arguments are not converted in place";
}

TEST(Invoke, LeavesArgumentsAloneWhenTheCallFails) {
  auto probe = New<clsDispatchProbe>();
  std::vector<Argument> args = {Pos(int16_t{5}), Pos(u"x")};
  EXPECT_EQ(testing::RaisedNumber([&] { Invoke(*probe, u"Increment", InvokeKind::kCall, args); }),
            13);
  EXPECT_EQ(args[0].value, Variant(int16_t{5}));
}

TEST(Invoke, KeepsTheFiveFieldsOfARaisedError) {
  auto probe = New<clsDispatchProbe>();
  std::vector<Argument> none;
  try {
    Invoke(*probe, u"Fail", InvokeKind::kCall, none);
    ADD_FAILURE() << "Fail raised nothing";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), xcZKERR_STRING_INSTRRIGHT);
    EXPECT_EQ(U8(e.source()), "ZKRuntimeLib.clsDispatchProbe.Fail");
    EXPECT_EQ(U8(e.description()), "Отказ");
    EXPECT_EQ(U8(e.helpFile()), "probe.chm");
    EXPECT_EQ(e.helpContext(), 42);
  }
  std::vector<Argument> bad = {Pos(u"x")};
  try {
    Invoke(*probe, u"TakeLong", InvokeKind::kCall, bad);
    ADD_FAILURE() << "TakeLong(\"x\") raised nothing";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 13);
    EXPECT_EQ(U8(e.description()), "Type mismatch");
    EXPECT_EQ(e.helpContext(), 0);
  }
}

TEST(Invoke, SetsAndReadsProperties) {
  auto probe = New<clsDispatchProbe>();
  auto other = New<clsDispatchProbe>();
  EXPECT_EQ(CallText(*probe, u"Caption", {Pos(u"hello")}, InvokeKind::kLet), "");
  EXPECT_EQ(CallText(*probe, u"caption", {}), "hello");
  EXPECT_EQ(CallText(*probe, u"Caption", {Pos(int32_t{7})}, InvokeKind::kSet), "")
      << "a set on a property that only has a let";
  EXPECT_EQ(probe->Caption(), u"7");

  // An object assigned by a let goes to the property's set.
  std::vector<Argument> args = {Pos(other)};
  Invoke(*probe, u"Partner", InvokeKind::kLet, args);
  EXPECT_EQ(probe->Partner().get(), other.get());
  std::vector<Argument> none;
  EXPECT_EQ(Invoke(*probe, u"Partner", InvokeKind::kCall, none).asObject().get(), other.get());
  args = {Pos(Variant::Nothing())};
  Invoke(*probe, u"Partner", InvokeKind::kSet, args);
  EXPECT_FALSE(probe->Partner());

  const CallRow refused[] = {
      {"an object of another class", u"Partner", {Pos(New<clsZKRunTimeLib>())}, "error 13"},
      {"a number for an object", u"Partner", {Pos(int32_t{1})}, "error 13"},
      {"a let of a method", u"Fire", {Pos(u"x")}, "error 438"},
      {"a let of an unknown property", u"NoSuch", {Pos(u"x")}, "error 438"},
      {"a let with no value", u"Caption", {}, "error 449"},
  };
  for (const CallRow& row : refused) {
    EXPECT_EQ(CallText(*probe, row.member, row.args, InvokeKind::kSet), row.result) << row.what;
  }
}

TEST(Invoke, PassesTheAssignedValueLastToIndexedProperties) {
  auto probe = New<clsDispatchProbe>();
  EXPECT_EQ(CallText(*probe, u"Item", {Pos(int32_t{3}), Pos(u"c")}, InvokeKind::kLet), "");
  EXPECT_EQ(CallText(*probe, u"Item", {Pos(int32_t{3})}), "c");
  EXPECT_EQ(CallText(*probe, u"Item", {Pos(int32_t{4})}), "");
  EXPECT_EQ(CallText(*probe, u"Item", {Pos(u"c")}, InvokeKind::kLet), "error 449")
      << "the value alone leaves the index out";
  EXPECT_EQ(CallText(*probe, u"Item", {Named(u"Index", int32_t{5}), Pos(u"e")}, InvokeKind::kLet),
            "");
  EXPECT_EQ(probe->Item(5), u"e");

  // With an optional index, the value alone goes to the value, not to the index.
  EXPECT_EQ(CallText(*probe, u"Tag", {Pos(u"v")}, InvokeKind::kLet), "");
  EXPECT_EQ(CallText(*probe, u"Tag", {}), "key=v");
  EXPECT_EQ(CallText(*probe, u"Tag", {Pos(u"ab"), Pos(u"w")}, InvokeKind::kLet), "");
  EXPECT_EQ(CallText(*probe, u"Tag", {Pos(u"ab")}), "ab=w");
  EXPECT_EQ(CallText(*probe, u"Tag", {Pos(u"a"), Pos(u"b"), Pos(u"c")}, InvokeKind::kLet),
            "error 450");

  std::vector<Argument> index = {Pos(int32_t{3})};
  EXPECT_EQ(InvokeDefault(*probe, index), Variant(u"c"));
  auto root = New<clsZKRunTimeLib>();
  EXPECT_EQ(testing::RaisedNumber([&] { InvokeDefault(*root, index); }), 438);
}

TEST(Events, ReachConnectedSinksInOrderUntilDisconnected) {
  auto probe = New<clsDispatchProbe>();
  std::vector<std::string> heard;
  const int first = probe->Connect([&](StringView event, std::vector<Variant>& args) {
    heard.push_back("1:" + U8(event) + "(" + U8(args.at(0).asString()) + ")");
  });
  probe->Connect([&](StringView event, std::vector<Variant>&) { heard.push_back("2:" + U8(event)); });
  EXPECT_EQ(CallText(*probe, u"Fire", {Pos(u"x")}), "");
  probe->Disconnect(first);
  EXPECT_EQ(CallText(*probe, u"Fire", {Pos(u"y")}), "");
  EXPECT_EQ(heard, (std::vector<std::string>{"1:Changed(x)", "2:Changed", "2:Changed"}));
}

// A member's description in the form a type-library viewer shows it.
std::string Signature(const MemberInfo& m) {
  static const char* kProperty[] = {"", "Property Get ", "Property Let ", "Property Set "};
  std::string s = m.kind != MemberKind::kMethod            ? kProperty[static_cast<int>(m.kind)]
                  : m.returnType == VarType::kEmpty ? "Sub "
                                                    : "Function ";
  s += U8(m.name) + "(";
  for (size_t i = 0; i < m.params.size(); ++i) {
    const ParamInfo& p = m.params[i];
    s += i ? ", " : "";
    s += p.optional ? "Optional " : "";
    s += p.writesBack ? "ByRef " : "";
    s += U8(p.name) + " As " + U8(TypeName(p.type));
    if (p.optional && !p.defaultValue.isMissing()) {
      const std::string value = U8(ToString(p.defaultValue));
      s += " = " + (p.defaultValue.isString() ? "\"" + value + "\"" : value);
    }
  }
  s += ")";
  if (m.returnType != VarType::kEmpty) s += " As " + U8(TypeName(m.returnType));
  return s;
}

TEST(TypeInformation, DescribesEveryMemberFromItsSignature) {
  const ClassInfo* probe = nullptr;
  for (const ClassInfo* c : RegisteredClasses()) {
    if (c->name == u"clsDispatchProbe") probe = c;
  }
  ASSERT_NE(probe, nullptr);
  std::vector<std::string> members;
  for (const MemberInfo& m : probe->members) members.push_back(Signature(m));
  EXPECT_EQ(members, (std::vector<std::string>{
                         "Function Repeat(Text As String, Optional Count As Integer = 2, "
                         "Optional Separator As String = \"-\") As String",
                         "Function TakeLong(Value As Long) As Long",
                         "Function TakeInteger(Value As Integer) As Integer",
                         "Sub Increment(ByRef Value As Long, Optional By As Long = 1)",
                         "Sub Swap(ByRef First As String, ByRef Second As String)",
                         "Function Bump(Optional ByRef Counter As Long = 10) As Long",
                         "Function TryHalve(Value As Long, Optional ByRef Half As Long) As Boolean",
                         "Function Describe(Optional Anything As Variant) As String",
                         "Function CountStrings(Items As String()) As Long",
                         "Property Get Caption() As String",
                         "Property Let Caption(RHS As String)",
                         "Property Get Partner() As Object",
                         "Property Set Partner(RHS As Object)",
                         "Property Get Item(Index As Long) As String",
                         "Property Let Item(Index As Long, RHS As String)",
                         "Property Get Tag(Optional Key As String = \"key\") As String",
                         "Property Let Tag(Optional Key As String = \"key\", RHS As String)",
                         "Sub Fire(What As String)",
                         "Sub Fail()",
                     }));
  EXPECT_EQ(U8(probe->defaultMember), "Item");
  ASSERT_EQ(probe->events.size(), 1u);
  EXPECT_EQ(U8(probe->events[0].name), "Changed");
  ASSERT_EQ(probe->events[0].params.size(), 1u);
  EXPECT_EQ(U8(probe->events[0].params[0].name), "ChangedItem");
  EXPECT_TRUE(probe->creatable);
  EXPECT_FALSE(probe->enumerable());
  EXPECT_EQ(probe->find(u"TAG", MemberKind::kPropertyLet), &probe->members[16]);
  EXPECT_EQ(probe->find(u"Tag", MemberKind::kPropertySet), nullptr);
}

TEST(TypeInformation, EnumeratorsWalkASnapshot) {
  const ClassInfo* e = FindClass(u"Enumerator");
  ASSERT_NE(e, nullptr);
  EXPECT_TRUE(e->find(u"next", MemberKind::kMethod));
  auto walker = New<Enumerator>(std::vector<Variant>{Variant(int32_t{1}), Variant(u"b")});
  std::vector<Argument> item = {Pos(Variant())};
  EXPECT_EQ(Invoke(*walker, u"Next", InvokeKind::kCall, item), Variant(true));
  EXPECT_EQ(item[0].value, Variant(int32_t{1}));
  std::vector<Argument> skip = {Pos(int32_t{5})};
  EXPECT_EQ(Invoke(*walker, u"Skip", InvokeKind::kCall, skip), Variant(false));
  EXPECT_EQ(Invoke(*walker, u"Next", InvokeKind::kCall, item), Variant(false));
  walker->Reset();
  EXPECT_TRUE(walker->Skip(1));
  Variant v;
  EXPECT_TRUE(walker->Next(v));
  EXPECT_EQ(v, Variant(u"b"));
}

}  // namespace
}  // namespace tsruntime
