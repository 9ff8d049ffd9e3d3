// The dictionary against a plain model: one list, linear lookups and inserts by
// shifting, each operation written step by step as the dictionary is meant to behave.
// Random operation sequences in every sort and compare mode must leave both in the
// same state, with the same results, errors and events.
#include <gtest/gtest.h>

#include <random>

#include "containers/dictionary_list_model.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKDictionary.h"

namespace tsruntime {
namespace {

using namespace container_tests;

// The dictionary and the model side by side, with random arguments drawn so that
// hits, misses, case twins and bad indexes all occur.
struct Pair {
  Ref<clsZKDictionary> d = New<clsZKDictionary>();
  ListModel m;
  std::vector<Variant> heard;
  std::mt19937 rng;
  int key_length, steps = 0;

  Pair(uint32_t seed, int key_length) : rng(seed), key_length(key_length) {
    d->OnChanged([this](const Variant& item) { heard.push_back(item); });
  }

  int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); }
  Variant Key() {
    String s;
    for (int i = 1 + Below(key_length); i > 0; --i) s += u"abcABCжЖ"[Below(8)];
    return Variant(s);
  }
  Variant Item() {
    const int n = m.Count();
    switch (Below(10)) {
      case 0: return Variant(int32_t{Below(n + 3) - 1});
      case 1: return Variant(Below(n + 2) + 0.5);
      case 2: return Variant(Below(2) == 0);
      case 3: return Variant::Null();
      case 4: case 5: return Variant(int32_t{n > 0 ? Below(n) : 0});
      case 6: return n > 0 ? Variant(ToUpper(m.list[Below(n)].key)) : Key();
      default: return Key();
    }
  }
  void Modes(int32_t sort, int32_t compare) {
    d->LetSortMode(static_cast<xeTS_DICTIONARY_SORT>(m.sort = sort));
    d->LetCompareMode(m.compare = compare);
  }

  // One operation on both: 0-29 Add, 30-41 Remove, 42-53 Data let, 54-65 Key let,
  // 66-77 reads, 78-81 SortMode, 82-85 CompareMode, 99 Clear.
  void Step(int op) {
    SCOPED_TRACE("step " + std::to_string(++steps) + ", operation " + std::to_string(op));
    const Variant item = op < 30 && Below(8) ? Key()  // Add mostly new keys, Remove mostly hits
                         : op < 42 && Below(2) ? Variant(int32_t{Below(m.Count() + 1)}) : Item();
    const Variant v = op >= 54 && Below(6) ? Key() : Variant(Below(1000));
    if (op < 30) {
      d->Add(item, v), m.Add(item, v);
    } else if (op < 42) {
      d->Remove(item), m.Remove(item);
    } else if (op < 54) {
      ASSERT_EQ(ErrorNumberOf([&] { d->LetData(item, v); }), ErrorNumberOf([&] { m.LetData(item, v); }));
    } else if (op < 66) {
      d->LetKey(item, v), m.LetKey(item, v);
    } else if (op < 78) {
      const int i = m.Locate(item);
      ASSERT_EQ(d->Exists(item), m.Exists(item));
      ASSERT_EQ(d->Data(item), i < 0 ? Variant::Nothing() : m.list[i].value);
      ASSERT_EQ(d->Key(item), IsKey(item) ? item : i >= 0 ? Variant(m.list[i].key) : Variant());
    } else if (op < 86) {
      Modes(op < 82 ? Below(4) : m.sort, op < 82 ? m.compare : Below(2));
    } else if (op == 99) {
      d->Clear(), m.Clear();
    }
    ASSERT_EQ(d->Count(), m.Count());
    ASSERT_EQ(heard, m.events) << "events";
  }

  void ExpectSame() {
    SCOPED_TRACE("after step " + std::to_string(steps));
    ASSERT_EQ(d->Changed(), m.changed);
    ASSERT_EQ(static_cast<int32_t>(d->SortMode()), m.list.empty() ? m.sort : 0);
    for (int32_t i = 0; i < m.Count(); ++i) {
      ASSERT_EQ(d->Key(Variant(i)), Variant(m.list[i].key)) << "entry " << i;
      ASSERT_EQ(d->Data(Variant(i)), m.list[i].value) << "entry " << i;
    }
  }
};

TEST(DictionaryModel, MixedSequencesInEveryModeMatchTheModel) {
  ScopedLocale locale("ru_RU");
  for (uint32_t seed = 1; seed <= 30 && !HasFatalFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Pair p(seed, seed % 2 ? 2 : 5);  // short keys collide often, longer ones grow larger
    while (p.steps < 1500 && !HasFatalFailure()) {
      p.Step(p.Below(100));
      if (p.steps % 100 == 0) p.ExpectSame();
    }
  }
}

TEST(DictionaryModel, ThousandsOfEntriesGrownAndShrunkMatchTheModel) {
  // Enough entries for several tree levels; shrinking makes nodes borrow and merge.
  ScopedLocale locale("en_US");
  for (uint32_t seed = 100; seed < 103 && !HasFatalFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Pair p(seed, 12);
    p.Modes(static_cast<int32_t>(seed % 3), static_cast<int32_t>(seed % 2));
    for (int shrink = 0; shrink < 2 && !HasFatalFailure(); ++shrink) {
      while ((shrink ? p.m.Count() > 40 : p.m.Count() < 4000) && !HasFatalFailure()) {
        p.Step(p.Below(4) ? 30 * shrink : p.Below(78));  // mostly Add, then Remove
        if (p.steps % 1000 == 0) p.ExpectSame();
      }
      p.ExpectSame();
    }
  }
}

}  // namespace
}  // namespace tsruntime
