// clsZKDictionary through its public interface: ordering, keys, indexes and flags.
#include <gtest/gtest.h>

#include "tsruntime/automation/locale.h"
#include "containers/support.h"
#include "tsruntime/clsZKDictionary.h"

namespace tsruntime {
namespace {

using container_tests::ErrorNumberOf;
using container_tests::I;

std::vector<String> KeysOf(const clsZKDictionary& d) {
  std::vector<String> keys;
  for (int32_t i = 0; i < d.Count(); ++i) keys.push_back(d.Key(I(i)).asString());
  return keys;
}

std::string Joined(const std::vector<String>& keys) {
  std::string out;
  for (const String& k : keys) out += (out.empty() ? "" : ",") + ToUtf8(k);
  return out;
}

Ref<clsZKDictionary> Filled(std::initializer_list<const char16_t*> keys, int32_t sort = 0,
                            int32_t compare = 0) {
  auto d = New<clsZKDictionary>();
  d->LetSortMode(static_cast<xeTS_DICTIONARY_SORT>(sort));
  d->LetCompareMode(compare);
  int32_t value = 0;
  for (const char16_t* k : keys) d->Add(Variant(k), I(++value));
  return d;
}

TEST(DictionaryOrder, EntriesLandWhereTheModesSay) {
  ScopedLocale locale("en_US");
  struct Case {
    const char* sentence;
    int32_t sort, compare;
    std::initializer_list<const char16_t*> added;
    const char* order;
  };
  const Case cases[] = {
      {"unsorted keeps insertion order", 0, 0, {u"b", u"a", u"c"}, "b,a,c"},
      {"ascending sorts a, b, c", 1, 0, {u"b", u"a", u"c"}, "a,b,c"},
      {"descending sorts c, b, a", 2, 0, {u"b", u"a", u"c"}, "c,b,a"},
      {"any other non-zero mode sorts ascending", 5, 0, {u"b", u"a", u"c"}, "a,b,c"},
      {"a negative mode sorts ascending", -1, 0, {u"b", u"a", u"c"}, "a,b,c"},
      {"binary compare puts capitals first", 1, 0, {u"abc", u"ABD"}, "ABD,abc"},
      {"text compare ignores case", 1, 1, {u"abc", u"ABD"}, "abc,ABD"},
      {"text compare ignores case, descending", 2, 1, {u"ABD", u"abc", u"abe"}, "abe,ABD,abc"},
      {"database compare orders as text", 1, 2, {u"abc", u"ABD"}, "abc,ABD"},
      {"Cyrillic keys sort by alphabet", 1, 1, {u"яблоко", u"Арбуз", u"вишня"},
       "Арбуз,вишня,яблоко"},
      {"a key between two lands between them", 1, 0, {u"a", u"c", u"e", u"b", u"d"},
       "a,b,c,d,e"},
      {"a first key smaller than all goes first", 1, 0, {u"m", u"n", u"o", u"a"}, "a,m,n,o"},
  };
  for (const Case& c : cases) {
    auto d = Filled(c.added, c.sort, c.compare);
    EXPECT_EQ(Joined(KeysOf(*d)), c.order) << c.sentence;
  }
}

TEST(DictionaryOrder, SortedInsertionTrustsTheEntriesAlreadyThere) {
  // c and a arrived unsorted; the binary search compares b with c only and puts it
  // first. Nothing is re-sorted when SortMode changes.
  auto d = Filled({u"c", u"a"});
  d->LetSortMode(xcTS_DICT_SORT_ASC);
  d->Add(Variant(u"b"), I(3));
  EXPECT_EQ(Joined(KeysOf(*d)), "b,c,a");
}

TEST(DictionaryOrder, KeyEqualUnderCompareModeIsRefused) {
  ScopedLocale locale("en_US");
  // Text compare finds "café" with a precomposed é equal to "CAFE" + a combining
  // acute; the two differ in more than case, so only the sorted search refuses.
  auto sorted = Filled({u"caf\u00E9", u"CAFE\u0301"}, 1, 1);
  EXPECT_EQ(sorted->Count(), 1);
  auto unsorted = Filled({u"caf\u00E9", u"CAFE\u0301"}, 0, 1);
  EXPECT_EQ(unsorted->Count(), 2);
}

TEST(DictionarySortMode, ReadsZeroWhileEntriesExist) {
  auto d = New<clsZKDictionary>();
  d->LetSortMode(xcTS_DICT_SORT_ASC);
  EXPECT_EQ(d->SortMode(), xcTS_DICT_SORT_ASC) << "empty: reads what was set";
  d->Add(Variant(u"a"));
  EXPECT_EQ(d->SortMode(), xcTS_DICT_SORT_NONE) << "one entry: reads 0";
  d->LetSortMode(xcTS_DICT_SORT_DESC);
  EXPECT_EQ(d->SortMode(), xcTS_DICT_SORT_NONE) << "set while filled: still reads 0";
  d->Add(Variant(u"b"));
  EXPECT_EQ(Joined(KeysOf(*d)), "b,a") << "but the stored mode is used";
  d->Clear();
  EXPECT_EQ(d->SortMode(), xcTS_DICT_SORT_DESC) << "after Clear: reads the stored mode";
}

TEST(DictionaryCompareMode, IsStoredAsGiven) {
  auto d = New<clsZKDictionary>();
  EXPECT_EQ(d->CompareMode(), 0);
  for (int32_t mode : {1, 2, 7, -3, 0}) {
    d->LetCompareMode(mode);
    EXPECT_EQ(d->CompareMode(), mode);
  }
}

TEST(DictionaryKeys, DifferingOnlyInCaseNeverCoexist) {
  for (int32_t sort : {0, 1, 2}) {
    for (int32_t compare : {0, 1}) {
      auto d = Filled({u"A", u"a", u"Ж", u"ж"}, sort, compare);
      const std::string mode = "sort " + std::to_string(sort) + " compare " +
                               std::to_string(compare);
      EXPECT_EQ(d->Count(), 2) << mode;
      EXPECT_TRUE(d->Exists(Variant(u"a"))) << mode;
      EXPECT_EQ(d->Data(Variant(u"a")), I(1)) << mode << ": the first one stays";
      EXPECT_EQ(d->Data(Variant(u"ж")), I(3)) << mode;
    }
  }
}

TEST(DictionaryKeys, AddTurnsKeysIntoText) {
  ScopedLocale locale("ru_RU");
  struct Case {
    const char* sentence;
    int32_t entries_before;
    Variant key;
    const char16_t* stored;  // null: refused
  };
  const Case cases[] = {
      {"a number on an empty dictionary is stored as its digits", 0, I(1), u"1"},
      {"a number k is refused while k or more entries exist", 1, I(1), nullptr},
      {"a number above the count is stored", 1, I(2), u"2"},
      {"an Integer counts like a Long", 2, Variant(int16_t{2}), nullptr},
      {"zero is no position, so it is stored", 3, I(0), u"0"},
      {"a negative number is stored", 3, I(-3), u"-3"},
      {"a Double is stored in the locale's form", 1, Variant(2.5), u"2,5"},
      {"a Double rounding to a taken position is refused", 3, Variant(2.5), nullptr},
      {"True is position -1, so it is stored as text", 1, Variant(true), u"True"},
      {"Empty is position 0 and becomes the empty key", 1, Variant(), u""},
      {"Null cannot become text and is dropped", 1, Variant::Null(), nullptr},
      {"an object cannot become text and is dropped", 1, Variant(New<clsZKDictionary>()),
       nullptr},
  };
  for (const Case& c : cases) {
    auto d = New<clsZKDictionary>();
    for (int32_t i = 0; i < c.entries_before; ++i) {
      d->Add(Variant(FromAscii("k" + std::to_string(i))));
    }
    d->Add(c.key, Variant(u"new"));
    if (c.stored) {
      ASSERT_EQ(d->Count(), c.entries_before + 1) << c.sentence;
      EXPECT_EQ(d->Key(I(c.entries_before)), Variant(c.stored)) << c.sentence;
      EXPECT_EQ(d->Data(Variant(c.stored)), Variant(u"new")) << c.sentence;
    } else {
      EXPECT_EQ(d->Count(), c.entries_before) << c.sentence;
    }
  }
}

TEST(DictionaryKeys, ExistsReadsNumbersAsOneBasedPositions) {
  auto d = Filled({u"alpha", u"beta", u"gamma"});
  struct Case {
    const char* sentence;
    Variant arg;
    bool exists;
  };
  const Case cases[] = {
      {"a stored key", Variant(u"beta"), true},
      {"a stored key in other case", Variant(u"BETA"), true},
      {"a missing key", Variant(u"delta"), false},
      {"a key that is a digit", Variant(u"1"), false},
      {"position 0", I(0), false},
      {"position 1", I(1), true},
      {"position Count", I(3), true},
      {"position Count + 1", I(4), false},
      {"a negative position", I(-1), false},
      {"a Double rounding to 1", Variant(1.4), true},
      {"a Double rounding to 4", Variant(3.6), false},
      {"True, which is -1", Variant(true), false},
      {"Empty, which is 0", Variant(), false},
      {"Null", Variant::Null(), false},
      {"a number too big for a Long", Variant(1e12), false},
      {"an object", Variant(New<clsZKDictionary>()), false},
  };
  for (const Case& c : cases) EXPECT_EQ(d->Exists(c.arg), c.exists) << c.sentence;

  auto empty = New<clsZKDictionary>();
  EXPECT_FALSE(empty->Exists(I(0)));
  EXPECT_FALSE(empty->Exists(Variant(u"")));
}

TEST(DictionaryReads, DataAndKeyReadIndexesAndKeys) {
  auto d = Filled({u"one", u"two"});
  struct Case {
    const char* sentence;
    Variant item;
    Variant data;
    Variant key;
  };
  const Variant nothing = Variant::Nothing();
  const Case cases[] = {
      {"index 0", I(0), I(1), Variant(u"one")},
      {"index 1 as an Integer", Variant(int16_t{1}), I(2), Variant(u"two")},
      {"index 1 as a Double", Variant(1.0), I(2), Variant(u"two")},
      {"False is index 0", Variant(false), I(1), Variant(u"one")},
      {"Empty is index 0", Variant(), I(1), Variant(u"one")},
      {"index 5 of two entries", I(5), nothing, Variant()},
      {"index -1", I(-1), nothing, Variant()},
      {"True is index -1", Variant(true), nothing, Variant()},
      {"Null", Variant::Null(), nothing, Variant()},
      {"a key", Variant(u"two"), I(2), Variant(u"two")},
      {"a key in other case; Key echoes it", Variant(u"TWO"), I(2), Variant(u"TWO")},
      {"a missing key; Key echoes it", Variant(u"zz"), nothing, Variant(u"zz")},
      {"the text of an index is a key", Variant(u"0"), nothing, Variant(u"0")},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(d->Data(c.item), c.data) << c.sentence;
    EXPECT_EQ(d->Key(c.item), c.key) << c.sentence;
  }
  EXPECT_EQ(New<clsZKDictionary>()->Key(Variant(u"zz")), Variant(u"zz"))
      << "Key of a string on an empty dictionary";
}

TEST(DictionaryReads, ValuesMayBeObjectsAndAreHandedBackAsTheSameObject) {
  auto d = New<clsZKDictionary>();
  auto inner = New<clsZKDictionary>();
  d->Add(Variant(u"obj"), Variant(inner));
  d->Add(Variant(u"num"), I(5));
  EXPECT_EQ(d->Data(Variant(u"obj")).asObject().get(), inner.get());
  auto other = New<clsZKDictionary>();
  d->SetData(Variant(u"num"), Variant(other));
  EXPECT_EQ(d->Data(I(1)).asObject().get(), other.get());
}

TEST(DictionaryReplace, DataMovesTheEntryAndTakesTheKeyAsWritten) {
  struct Case {
    const char* sentence;
    int32_t sort;
    Variant item;
    const char* order;
    const char16_t* replaced_key;
  };
  const Case cases[] = {
      {"unsorted, by key: the entry moves to the end", 0, Variant(u"a"), "b,c,a", u"a"},
      {"unsorted, by index: the entry moves to the end", 0, I(1), "a,c,b", u"b"},
      {"unsorted, the last entry stays last", 0, Variant(u"c"), "a,b,c", u"c"},
      {"sorted: the entry returns to its place", 1, Variant(u"a"), "a,b,c", u"a"},
      {"a key in other case renames the entry", 0, Variant(u"B"), "a,c,B", u"B"},
  };
  for (const Case& c : cases) {
    auto d = Filled({u"a", u"b", u"c"}, c.sort);
    d->LetData(c.item, Variant(u"new"));
    EXPECT_EQ(Joined(KeysOf(*d)), c.order) << c.sentence;
    EXPECT_EQ(d->Data(Variant(c.replaced_key)), Variant(u"new")) << c.sentence;
  }
}

TEST(DictionaryReplace, AFailedLookupReachesTheHostAndChangesNothing) {
  struct Case {
    const char* sentence;
    Variant item;
    int error;
  };
  const Case cases[] = {
      {"a missing key is an invalid argument", Variant(u"zz"), 5},
      {"index 2 of two entries is out of range", I(2), 9},
      {"index -1 is out of range", I(-1), 9},
      {"True, index -1, is out of range", Variant(true), 9},
      {"a Null index cannot be used", Variant::Null(), 94},
  };
  for (const Case& c : cases) {
    for (bool set : {false, true}) {
      auto d = Filled({u"a", u"b"});
      EXPECT_EQ(ErrorNumberOf([&] {
                  if (set) {
                    d->SetData(c.item, Variant(New<clsZKDictionary>()));
                  } else {
                    d->LetData(c.item, I(9));
                  }
                }),
                c.error)
          << c.sentence << (set ? " (set)" : " (let)");
      EXPECT_EQ(Joined(KeysOf(*d)), "a,b") << c.sentence;
      EXPECT_EQ(d->Data(I(0)), I(1)) << c.sentence;
    }
  }
}

TEST(DictionaryRename, KeyLetRenamesSkipsOrLosesTheEntry) {
  ScopedLocale locale("en_US");
  struct Case {
    const char* sentence;
    int32_t compare;
    Variant item;
    Variant new_key;
    const char* order;
  };
  const Case cases[] = {
      {"by index: renamed and moved to the end", 0, I(0), Variant(u"x"), "b,c,x"},
      {"by key: renamed and moved to the end", 0, Variant(u"B"), Variant(u"y"), "a,c,y"},
      {"a number as the new key becomes its digits", 0, I(2), I(7), "a,b,7"},
      {"index out of range: nothing", 0, I(3), Variant(u"x"), "a,b,c"},
      {"missing key: nothing", 0, Variant(u"q"), Variant(u"x"), "a,b,c"},
      {"new key taken, by index: the entry is lost", 0, I(0), Variant(u"b"), "b,c"},
      {"new key taken, by key: the entry is lost", 0, Variant(u"c"), Variant(u"A"), "a,b"},
      {"text compare: a change of case alone is ignored", 1, Variant(u"b"), Variant(u"B"),
       "a,b,c"},
      {"binary compare: a change of case renames", 0, Variant(u"b"), Variant(u"B"), "a,c,B"},
      {"new key Null, by key: nothing", 0, Variant(u"a"), Variant::Null(), "a,b,c"},
  };
  for (const Case& c : cases) {
    auto d = Filled({u"a", u"b", u"c"}, 0, c.compare);
    d->LetKey(c.item, c.new_key);
    EXPECT_EQ(Joined(KeysOf(*d)), c.order) << c.sentence;
  }
}

TEST(DictionaryRename, RenamedEntryKeepsItsValueAndFindsItsSortedPlace) {
  auto d = Filled({u"b", u"d", u"f"}, 1);
  d->LetKey(Variant(u"f"), Variant(u"a"));
  EXPECT_EQ(Joined(KeysOf(*d)), "a,b,d");
  EXPECT_EQ(d->Data(Variant(u"a")), I(3));
}

TEST(DictionaryRemove, RemovesByKeyOrIndex) {
  struct Case {
    const char* sentence;
    Variant item;
    const char* order;
  };
  const Case cases[] = {
      {"a key", Variant(u"b"), "a,c"},
      {"a key in other case", Variant(u"C"), "a,b"},
      {"a missing key", Variant(u"z"), "a,b,c"},
      {"index 0", I(0), "b,c"},
      {"index 2 as a Double", Variant(2.0), "a,b"},
      {"index 7 of three", I(7), "a,b,c"},
      {"the text of an index is a key", Variant(u"1"), "a,b,c"},
  };
  for (const Case& c : cases) {
    auto d = Filled({u"a", u"b", u"c"});
    d->Remove(c.item);
    EXPECT_EQ(Joined(KeysOf(*d)), c.order) << c.sentence;
  }
}

TEST(DictionaryChanged, TracksEveryChangeUntilClear) {
  struct Case {
    const char* sentence;
    std::function<void(clsZKDictionary&)> action;
    bool changed;
  };
  const Case cases[] = {
      {"nothing done", [](clsZKDictionary&) {}, false},
      {"an Add", [](clsZKDictionary& d) { d.Add(Variant(u"a")); }, true},
      {"an Add refused", [](clsZKDictionary& d) { d.Add(Variant::Null()); }, false},
      {"a Remove by index, even out of range", [](clsZKDictionary& d) { d.Remove(I(7)); },
       true},
      {"a Remove by a missing key", [](clsZKDictionary& d) { d.Remove(Variant(u"x")); },
       false},
      {"a Key let with nothing to rename",
       [](clsZKDictionary& d) { d.LetKey(I(0), Variant(u"x")); }, false},
      {"a failed Data let",
       [](clsZKDictionary& d) { EXPECT_ANY_THROW(d.LetData(I(0), I(1))); }, false},
      {"an Add then Clear",
       [](clsZKDictionary& d) {
         d.Add(Variant(u"a"));
         d.Clear();
       },
       false},
      {"an Add, Clear and Add",
       [](clsZKDictionary& d) {
         d.Add(Variant(u"a"));
         d.Clear();
         d.Add(Variant(u"a"));
       },
       true},
  };
  for (const Case& c : cases) {
    auto d = New<clsZKDictionary>();
    c.action(*d);
    EXPECT_EQ(d->Changed(), c.changed) << c.sentence;
  }
}

TEST(DictionaryClear, EmptiesButKeepsTheModes) {
  auto d = Filled({u"b", u"a"}, 2, 1);
  d->Clear();
  EXPECT_EQ(d->Count(), 0);
  EXPECT_EQ(d->SortMode(), xcTS_DICT_SORT_DESC);
  EXPECT_EQ(d->CompareMode(), 1);
  EXPECT_FALSE(d->Exists(Variant(u"a")));
  d->Add(Variant(u"a"));
  d->Add(Variant(u"b"));
  EXPECT_EQ(Joined(KeysOf(*d)), "b,a");
}

TEST(DictionaryEnumeration, WalksTheValuesInEntryOrder) {
  auto d = Filled({u"c", u"a", u"b"}, 1);
  Ref<Enumerator> e = d->NewEnum();
  std::vector<Variant> seen;
  Variant v;
  while (e->Next(v)) seen.push_back(v);
  EXPECT_EQ(seen, (std::vector<Variant>{I(2), I(3), I(1)}));
}

}  // namespace
}  // namespace tsruntime
