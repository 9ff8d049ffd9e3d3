// clsZKDictionary's rules one case at a time, its OnChanged event, and the class as
// late-bound hosts reach it. Orders, lookups, Changed and the events of random sequences
// are the model test's.
#include <gtest/gtest.h>

#include <sstream>

#include "containers/support.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKDictionary.h"

namespace tsruntime {
namespace {

using namespace container_tests;

Variant S(const char16_t* s) { return Variant(s); }

enum Op { kAdd, kRemove, kLetData, kLetKey, kExists, kData, kKey, kLetByName, kSetByName,
          kKeyByName };

// Under the modes, the `start` keys are added in order with the values 1, 2, 3...; then
// `op` leaves the keys in `order`, returns `result` (or raises the error numbered so)
// and, when it `fires`, raises OnChanged once with `item`.
struct Row { const char* sentence; int32_t sort, compare; const char* start; Op op;
             Variant item, arg; const char* order; Variant result = {}; bool fires = false; };

std::string KeysOf(const clsZKDictionary& d) {
  std::string out;
  for (int32_t i = 0; i < d.Count(); ++i) out += (i ? " " : "") + ToUtf8(d.Key(I(i)).asString());
  return out;
}

void Check(const Row& r) {
  auto d = New<clsZKDictionary>();
  d->LetSortMode(static_cast<xeTS_DICTIONARY_SORT>(r.sort));
  d->LetCompareMode(r.compare);
  std::istringstream start(r.start);
  for (std::string k; start >> k;) d->Add(Variant(FromUtf8(k)), I(d->Count() + 1));
  std::vector<Variant> heard, sunk;
  std::string keys_heard;
  d->OnChanged([&](const Variant& item) { heard.push_back(item), keys_heard = KeysOf(*d); });
  d->Connect([&](StringView event, std::vector<Variant>& args) {
    if (event == u"OnChanged" && args.size() == 1) sunk.push_back(args[0]);
  });
  Variant got;
  const int error = ErrorNumberOf([&] {
    switch (r.op) {
      case kAdd: return d->Add(r.item, r.arg);
      case kRemove: return d->Remove(r.item);
      case kLetData: return d->LetData(r.item, r.arg);
      case kLetKey: return d->LetKey(r.item, r.arg);
      case kExists: got = Variant(d->Exists(r.item)); return;
      case kData: got = d->Data(r.item); return;
      case kKey: got = d->Key(r.item); return;
      case kLetByName: Call(*d, u"Data", InvokeKind::kLet, {r.item, r.arg}); return;
      case kSetByName: Call(*d, u"Data", InvokeKind::kSet, {r.item, r.arg}); return;
      case kKeyByName: Call(*d, u"Key", InvokeKind::kLet, {r.item, r.arg}); return;
    }
  });
  EXPECT_EQ(error ? I(error) : got, r.result) << r.sentence;
  EXPECT_EQ(KeysOf(*d), r.order) << r.sentence;
  EXPECT_EQ(heard, r.fires ? std::vector<Variant>{r.item} : std::vector<Variant>{}) << r.sentence;
  EXPECT_EQ(sunk, heard) << r.sentence << ": a late-bound sink hears the same";
  if (r.fires) {
    EXPECT_EQ(keys_heard, r.order) << r.sentence << ": raised after the change";
    EXPECT_TRUE(r.op == kLetKey || r.op == kKeyByName || d->Data(I(d->Count() - 1)) == r.arg)
        << r.sentence << ": the new value, moved last";
  }
}

// The rules the model test leaves out: collation, keys made from other types, the
// moment and argument of the event, and the members by name.
TEST(DictionaryRules, EachOperationFollowsItsRule) {
  ScopedLocale locale("ru_RU");
  const Variant no, falsy(false), obj(New<clsZKDictionary>()), integer1(int16_t{1});
  const Row rows[] = {
      {"text compare sorts ё before ж and я", 1, 1, "Яма ёж", kAdd, S(u"жук"), no, "ёж жук Яма"},
      {"sorted: a key equal under text compare is refused", 1, 1, "caf\u00E9", kAdd, S(u"CAFE\u0301"), no, "caf\u00E9"},
      {"unsorted: it is kept, as it differs in more than case", 0, 1, "caf\u00E9", kAdd, S(u"CAFE\u0301"), no, "caf\u00E9 CAFE\u0301"},
      {"a Double is stored in the locale's form", 0, 0, "k", kAdd, Variant(2.5), no, "k 2,5"},
      {"Empty, position 0, becomes the empty key", 0, 0, "k", kAdd, no, no, "k "},
      {"an object cannot become a key and is dropped", 0, 0, "k", kAdd, obj, no, "k"},
      {"Exists reads a number beyond a Long as absent", 0, 0, "a", kExists, Variant(1e12), no, "a", falsy},
      {"Data reads an Integer as an index", 0, 0, "a b", kData, integer1, no, "a b", I(2)},
      {"Data of a moves it last", 0, 0, "a b c", kLetData, S(u"a"), I(9), "b c a", no, true},
      {"Data at an Integer index reports it", 0, 0, "a b c", kLetData, integer1, I(9), "a c b", no, true},
      {"Key let of A renames a", 0, 0, "a b", kLetKey, S(u"A"), S(u"y"), "b y", no, true},
      {"Data let by name reports the key", 0, 0, "a b", kLetByName, S(u"a"), I(0), "b a", no, true},
      {"Data set by name reports the index", 0, 0, "a b", kSetByName, I(0), obj, "b a", no, true},
      {"Key let by name reports a", 0, 0, "a b", kKeyByName, S(u"a"), S(u"q"), "b q", no, true},
      {"keys match blind to case, ASCII or not", 0, 0, "x@AZ[\u0416\u0451", kExists, S(u"X@az[\u0436\u0401"), no, "x@AZ[\u0416\u0451", Variant(true)},
      {"and with Cyrillic among the first four", 0, 0, "\u0416\u0451az", kExists, S(u"\u0436\u0401AZ"), no, "\u0416\u0451az", Variant(true)},
      {"@ and ` differ by a case bit but are two keys", 0, 0, "x@Zz[y", kAdd, S(u"x`Zz{y"), no, "x@Zz[y x`Zz{y"},
      {"Data let by name of a missing key raises 5", 0, 0, "a", kLetByName, S(u"z"), no, "a", I(5)},
      {"Data set by name at index Count raises 9", 0, 0, "a", kSetByName, I(1), obj, "a", I(9)},
  };
  for (const Row& r : rows) Check(r);
}

TEST(DictionaryRules, HostsReadTheValuesThroughTheDefaultMemberAndTheEnumerator) {
  Ref<Object> o = CreateObject(u"clsZKDictionary");
  Call(*o, u"Add", InvokeKind::kCall, {S(u"a"), I(1)});
  Call(*o, u"Add", InvokeKind::kCall, {S(u"b")});
  std::vector<Argument> args{{{}, S(u"A")}};
  EXPECT_EQ(InvokeDefault(*o, args), I(1)) << "Data is the default member";
  std::vector<Variant> seen;
  Ref<Enumerator> e = static_cast<clsZKDictionary&>(*o).NewEnum();
  for (Variant v; e->Next(v);) seen.push_back(v);
  EXPECT_EQ(seen, (std::vector<Variant>{I(1), Variant::Missing()}))
      << "values, not keys; vData left out stores the missing-argument marker";
}

// Text compare orders by the thread's locale at the time of each insertion, also when it
// changes between two: in Swedish "ä" sorts after "z", in English beside "a".
TEST(DictionaryRules, SortedTextInsertionFollowsTheLocaleOfTheMoment) {
  auto d = New<clsZKDictionary>();
  d->LetSortMode(xcTS_DICT_SORT_ASC);
  d->LetCompareMode(1);
  auto add = [&](const char* locale, std::initializer_list<const char16_t*> keys) {
    ScopedLocale in(locale);
    for (const char16_t* k : keys) d->Add(S(k), I(0));
  };
  add("en_US", {u"a", u"z", u"b"});
  add("sv_SE", {u"ä", u"zz"});  // Swedish: "zz" goes before "ä"
  add("en_US", {u"zzz"});       // English: "ä" is passed, "zzz" goes last
  EXPECT_EQ(KeysOf(*d), "a b z zz ä zzz");
}

// Each dictionary holds the next as a value: releasing the first releases the whole chain
// without recursing once per link, whether the host drops it or replaces its value.
TEST(DictionaryRules, AChainOfDictionariesHeldAsValuesIsReleasedWhole) {
  const Ref<clsZKDictionary> tail = New<clsZKDictionary>();
  for (const bool replaced : {false, true}) {
    Ref<clsZKDictionary> root = New<clsZKDictionary>(), cur = root;
    for (int i = 0; i < 100000; ++i) {
      Ref<clsZKDictionary> next = i + 1 < 100000 ? New<clsZKDictionary>() : tail;
      cur->Add(S(u"k"), Variant(next)), cur = next;
    }
    cur = nullptr;
    if (replaced) root->LetData(S(u"k"), I(0));
    else root = nullptr;
    EXPECT_EQ(tail->RefCount(), 1) << (replaced ? "the first one's value replaced" : "dropped");
  }
}

}  // namespace
}  // namespace tsruntime
