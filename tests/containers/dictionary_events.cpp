// clsZKDictionary's OnChanged event, as C++ listeners and late-bound sinks see it, and
// the class as late-bound hosts reach it.
#include <gtest/gtest.h>

#include "containers/support.h"
#include "tsruntime/clsZKDictionary.h"

namespace tsruntime {
namespace {

using container_tests::I;
constexpr auto Call = container_tests::CallByName;

// A dictionary holding a, b, c with values 1, 2, 3, and every OnChanged it raises.
struct Watched {
  Ref<clsZKDictionary> d = New<clsZKDictionary>();
  std::vector<Variant> heard;
  Watched() {
    for (const char16_t* k : {u"a", u"b", u"c"}) d->Add(Variant(k), I(d->Count() + 1));
    d->OnChanged([this](const Variant& item) { heard.push_back(item); });
  }
};

TEST(DictionaryEvents, ChangesThroughDataAndKeyRaiseOnChangedOnceWithTheItemAsGiven) {
  struct Case {
    const char* sentence;
    std::function<void(clsZKDictionary&)> action;
    Variant item;
  };
  const Case cases[] = {
      {"Data let by key", [](clsZKDictionary& d) { d.LetData(Variant(u"a"), I(9)); },
       Variant(u"a")},
      {"Data let by key in other case",
       [](clsZKDictionary& d) { d.LetData(Variant(u"A"), I(9)); }, Variant(u"A")},
      {"Data let by an Integer index keeps the Integer",
       [](clsZKDictionary& d) { d.LetData(Variant(int16_t{1}), I(9)); },
       Variant(int16_t{1})},
      {"Data set with an object",
       [](clsZKDictionary& d) { d.SetData(I(2), Variant(New<clsZKDictionary>())); }, I(2)},
      {"Key let by index", [](clsZKDictionary& d) { d.LetKey(I(0), Variant(u"z")); }, I(0)},
      {"Key let by key", [](clsZKDictionary& d) { d.LetKey(Variant(u"b"), Variant(u"z")); },
       Variant(u"b")},
      {"Data let through Invoke",
       [](clsZKDictionary& d) { Call(d, u"Data", InvokeKind::kLet, {Variant(u"c"), I(0)}); },
       Variant(u"c")},
      {"Data set through Invoke",
       [](clsZKDictionary& d) {
         Call(d, u"Data", InvokeKind::kSet, {I(0), Variant(New<clsZKDictionary>())});
       },
       I(0)},
      {"Key let through Invoke",
       [](clsZKDictionary& d) {
         Call(d, u"Key", InvokeKind::kLet, {Variant(u"a"), Variant(u"q")});
       },
       Variant(u"a")},
  };
  for (const Case& c : cases) {
    Watched w;
    c.action(*w.d);
    EXPECT_EQ(w.heard, std::vector<Variant>{c.item}) << c.sentence;
    EXPECT_TRUE(w.d->Changed()) << c.sentence;
  }
}

TEST(DictionaryEvents, OtherOperationsAndFailuresRaiseNothing) {
  struct Case {
    const char* sentence;
    std::function<void(clsZKDictionary&)> action;
  };
  const Case cases[] = {
      {"Add", [](clsZKDictionary& d) { d.Add(Variant(u"new"), I(1)); }},
      {"Remove by key", [](clsZKDictionary& d) { d.Remove(Variant(u"a")); }},
      {"Remove by index", [](clsZKDictionary& d) { d.Remove(I(0)); }},
      {"Clear", [](clsZKDictionary& d) { d.Clear(); }},
      {"Data let of a missing key",
       [](clsZKDictionary& d) { EXPECT_ANY_THROW(d.LetData(Variant(u"x"), I(1))); }},
      {"Data let of a bad index",
       [](clsZKDictionary& d) { EXPECT_ANY_THROW(d.LetData(I(3), I(1))); }},
      {"Key let that loses the entry",
       [](clsZKDictionary& d) { d.LetKey(I(0), Variant(u"b")); }},
      {"Key let to the same key under text compare",
       [](clsZKDictionary& d) {
         d.LetCompareMode(1);
         d.LetKey(Variant(u"a"), Variant(u"A"));
       }},
      {"Key let of a missing key", [](clsZKDictionary& d) { d.LetKey(Variant(u"x"), I(1)); }},
  };
  for (const Case& c : cases) {
    Watched w;
    c.action(*w.d);
    EXPECT_TRUE(w.heard.empty()) << c.sentence;
  }
}

TEST(DictionaryEvents, ReplacementInSortedModeRaisesOnceAndKeepsOrder) {
  Watched w;
  w.d->Clear();
  w.d->LetSortMode(xcTS_DICT_SORT_DESC);
  for (const char16_t* k : {u"m", u"x", u"c"}) w.d->Add(Variant(k), I(0));
  w.d->LetData(Variant(u"x"), I(5));
  EXPECT_EQ(w.heard, std::vector<Variant>{Variant(u"x")});
  EXPECT_EQ(w.d->Key(I(0)), Variant(u"x"));
  EXPECT_EQ(w.d->Data(I(0)), I(5));
}

TEST(DictionaryEvents, LateBoundSinkHearsTheEventByNameWithOneArgument) {
  Ref<Object> o = CreateObject(u"TSRuntimeLib.clsZKDictionary");
  std::vector<std::pair<String, std::vector<Variant>>> heard;
  const int cookie = o->Connect([&](StringView event, std::vector<Variant>& args) {
    heard.emplace_back(String(event), args);
  });
  Call(*o, u"Add", InvokeKind::kCall, {Variant(u"k"), I(1)});
  Call(*o, u"Data", InvokeKind::kLet, {Variant(u"k"), I(2)});
  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].first, u"OnChanged");
  EXPECT_EQ(heard[0].second, std::vector<Variant>{Variant(u"k")});

  o->Disconnect(cookie);
  Call(*o, u"Key", InvokeKind::kLet, {Variant(u"k"), Variant(u"j")});
  EXPECT_EQ(heard.size(), 1u) << "a disconnected sink hears nothing";
  EXPECT_EQ(Call(*o, u"Key", InvokeKind::kCall, {I(0)}), Variant(u"j"));
}

TEST(DictionaryEvents, ListenersAndSinksShareOneDeliveryInConnectionOrder) {
  auto d = New<clsZKDictionary>();
  d->Add(Variant(u"k"));
  std::vector<std::string> order;
  d->OnChanged([&](const Variant&) { order.push_back("listener 1"); });
  d->Connect([&](StringView, std::vector<Variant>&) { order.push_back("sink"); });
  const int cookie = d->OnChanged([&](const Variant&) { order.push_back("listener 2"); });
  d->LetData(Variant(u"k"), I(1));
  EXPECT_EQ(order, (std::vector<std::string>{"listener 1", "sink", "listener 2"}));
  d->Disconnect(cookie);
  order.clear();
  d->LetData(Variant(u"k"), I(2));
  EXPECT_EQ(order, (std::vector<std::string>{"listener 1", "sink"}));
}

TEST(DictionaryEvents, ListenerSeesTheChangeAlreadyMade) {
  auto d = New<clsZKDictionary>();
  d->Add(Variant(u"a"), I(1));
  d->Add(Variant(u"b"), I(2));
  Variant seen_value;
  Variant seen_last_key;
  d->OnChanged([&](const Variant& item) {
    seen_value = d->Data(item);
    seen_last_key = d->Key(I(d->Count() - 1));
  });
  d->LetData(Variant(u"a"), I(10));
  EXPECT_EQ(seen_value, I(10));
  EXPECT_EQ(seen_last_key, Variant(u"a"));
}

TEST(DictionaryLateBound, TypeInformationDeclaresTheEventAndTheDefault) {
  const ClassInfo* c = FindClass(u"TSRuntimeLib.clsZKDictionary");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->defaultMember, u"Data");
  EXPECT_TRUE(c->enumerable());
  ASSERT_EQ(c->events.size(), 1u);
  EXPECT_EQ(c->events[0].name, u"OnChanged");
  ASSERT_EQ(c->events[0].params.size(), 1u);
  EXPECT_EQ(c->events[0].params[0].name, u"ChangedItem");
}

TEST(DictionaryLateBound, SortEnumerationIsRegistered) {
  const EnumInfo* found = nullptr;
  for (const EnumInfo* e : RegisteredEnums()) {
    if (e->name == u"xeTS_DICTIONARY_SORT") found = e;
  }
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->members, (std::vector<std::pair<String, int32_t>>{
                                {u"xcTS_DICT_SORT_NONE", 0},
                                {u"xcTS_DICT_SORT_ASC", 1},
                                {u"xcTS_DICT_SORT_DESC", 2}}));
}

TEST(DictionaryLateBound, HostsDriveItByNameWithDefaultsAndTheDefaultMember) {
  Ref<Object> o = CreateObject(u"clsZKDictionary");
  Call(*o, u"SortMode", InvokeKind::kLet, {I(2)});
  Call(*o, u"Add", InvokeKind::kCall, {Variant(u"a"), I(1)});
  Call(*o, u"Add", InvokeKind::kCall, {Variant(u"b")});
  EXPECT_EQ(Call(*o, u"Count", InvokeKind::kCall, {}), I(2));
  EXPECT_EQ(Call(*o, u"SortMode", InvokeKind::kCall, {}), I(0));
  EXPECT_EQ(Call(*o, u"Key", InvokeKind::kCall, {I(0)}), Variant(u"b"));
  EXPECT_TRUE(Call(*o, u"Data", InvokeKind::kCall, {Variant(u"b")}).isMissing())
      << "vData left out stores the missing-argument marker";
  std::vector<Argument> args{{{}, Variant(u"A")}};
  EXPECT_EQ(InvokeDefault(*o, args), I(1));
  EXPECT_EQ(Call(*o, u"Exists", InvokeKind::kCall, {I(2)}), Variant(true));

  Variant en = Call(*o, u"NewEnum", InvokeKind::kCall, {});
  std::vector<Argument> next{{{}, Variant()}};
  ASSERT_EQ(Invoke(*en.asObject(), u"Next", InvokeKind::kCall, next), Variant(true));
  EXPECT_TRUE(next[0].value.isMissing()) << "values, not keys: b's value comes first";

  try {
    Call(*o, u"Data", InvokeKind::kLet, {Variant(u"zz"), I(1)});
    ADD_FAILURE() << "a missing key must raise";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 5);
  }
}

}  // namespace
}  // namespace tsruntime
