// The dictionary against a plain model: two lists, linear lookups and positional
// inserts by shifting, each operation written down step by step as the dictionary is
// meant to behave. Random operation sequences in every sort and compare mode must
// leave both in the same state, with the same results, errors and events.
#include <gtest/gtest.h>

#include <random>

#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/locale.h"
#include "containers/support.h"
#include "tsruntime/clsZKDictionary.h"

namespace tsruntime {
namespace {

using container_tests::ErrorNumberOf;

class ListModel {
 public:
  std::vector<String> keys;
  std::vector<Variant> values;
  bool changed = false;
  int32_t sort = 0;
  int32_t compare = 0;
  std::vector<Variant> events;

  int32_t Count() const { return static_cast<int32_t>(keys.size()); }

  int32_t SortMode() const { return keys.empty() ? sort : 0; }

  bool Exists(const Variant& k) const {
    if (keys.empty()) return false;
    if (IsKey(k)) return Find(k.asString()) >= 0;
    try {
      const int32_t n = ToLong(k);
      return n >= 1 && n <= Count();
    } catch (const Error&) {
      return false;
    }
  }

  void Add(const Variant& k, const Variant& v) {
    if (Exists(k)) return;
    try {
      if (Insert(ToString(k), v)) changed = true;
    } catch (const Error&) {
    }
  }

  void Clear() {
    keys.clear();
    uppers.clear();
    values.clear();
    changed = false;
  }

  void Remove(const Variant& item) {
    if (IsKey(item)) {
      const int i = Find(item.asString());
      if (i >= 0) {
        Erase(i);
        changed = true;
      }
      return;
    }
    const int i = Index(item);
    if (i >= 0) Erase(i);
    changed = true;
  }

  Variant Data(const Variant& item) const {
    const int i = IsKey(item) ? Find(item.asString()) : Index(item);
    return i >= 0 ? values[i] : Variant::Nothing();
  }

  Variant Key(const Variant& item) const {
    if (IsKey(item)) return item;
    const int i = Index(item);
    return i >= 0 ? Variant(keys[i]) : Variant();
  }

  void LetData(const Variant& item, const Variant& v) {
    String k;
    int i;
    if (IsKey(item)) {
      i = Find(item.asString());
      if (i < 0) RaiseRuntime(RuntimeError::kInvalidCall);
      k = item.asString();
    } else {
      i = ToLong(item);
      if (i < 0 || i >= Count()) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
      k = keys[i];
    }
    Erase(i);
    if (Insert(k, v)) {
      changed = true;
      events.push_back(item);
    }
  }

  void LetKey(const Variant& item, const Variant& new_key) {
    try {
      bool ok;
      if (!IsKey(item)) {
        const int i = Index(item);
        if (i < 0) return;
        const Variant v = values[i];
        Erase(i);
        ok = Insert(ToString(new_key), v);
      } else {
        const String n = ToString(new_key);
        if (CompareStrings(item.asString(), n, compare) == 0) return;
        const int i = Find(item.asString());
        if (i < 0) return;
        const Variant v = values[i];
        Erase(i);
        ok = Insert(n, v);
      }
      if (ok) {
        changed = true;
        events.push_back(item);
      }
    } catch (const Error&) {
    }
  }

 private:
  static bool IsKey(const Variant& v) { return v.type() == VarType::kString; }

  std::vector<String> uppers;  // keys[i] in capitals, for the case-blind search

  // Zero-based index of the key, letter case ignored, or -1.
  int Find(StringView k) const {
    const String wanted = ToUpper(k);
    for (size_t i = 0; i < uppers.size(); ++i) {
      if (uppers[i] == wanted) return static_cast<int>(i);
    }
    return -1;
  }

  int Index(const Variant& item) const {
    try {
      const int32_t i = ToLong(item);
      return i >= 0 && i < Count() ? i : -1;
    } catch (const Error&) {
      return -1;
    }
  }

  void Erase(int i) {
    keys.erase(keys.begin() + i);
    uppers.erase(uppers.begin() + i);
    values.erase(values.begin() + i);
  }

  // Positions are one-based in the search, as written.
  bool Insert(const String& k, const Variant& v) {
    const int n = Count();
    int pos = n + 1;
    if (sort != 0 && n > 0) {
      const int sign = sort == 2 ? -1 : 1;
      int lo = 1, hi = n;
      for (;;) {
        const int mid = (lo + hi) / 2;
        const int c = CompareStrings(keys[mid - 1], k, compare) * sign;
        if (c == -1) {
          lo = mid + 1;
          if (lo > hi) {
            pos = lo;
            break;
          }
        } else if (c == 1) {
          hi = mid;
          if (lo == mid) {
            pos = mid;
            break;
          }
        } else {
          return false;
        }
      }
    }
    if (Find(k) >= 0) return false;
    keys.insert(keys.begin() + (pos - 1), k);
    uppers.insert(uppers.begin() + (pos - 1), ToUpper(k));
    values.insert(values.begin() + (pos - 1), v);
    return true;
  }
};

// Random arguments drawn so that hits, misses, case twins and bad indexes all occur.
class Draw {
 public:
  explicit Draw(uint32_t seed, int key_length) : rng_(seed), key_length_(key_length) {}

  int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }

  String KeyText() {
    static const char16_t kLetters[] = u"abcABCжЖ";
    String s;
    const int length = 1 + Below(key_length_);
    for (int i = 0; i < length; ++i) s += kLetters[Below(8)];
    return s;
  }

  // A key or an index, mostly in range.
  Variant Item(int count) {
    switch (Below(10)) {
      case 0: return Variant(static_cast<int32_t>(Below(count + 3)) - 1);
      case 1: return Variant(static_cast<double>(Below(count + 2)) + 0.5);
      case 2: return Variant(Below(2) == 0);
      case 3: return Variant::Null();
      case 4:
      case 5: return Variant(static_cast<int32_t>(count > 0 ? Below(count) : 0));
      default: return Variant(KeyText());
    }
  }

  Variant Value() { return Variant(static_cast<int32_t>(Below(1000))); }

 private:
  std::mt19937 rng_;
  int key_length_;
};

void ExpectSameState(const clsZKDictionary& d, const ListModel& m, const std::string& where) {
  ASSERT_EQ(d.Count(), m.Count()) << where;
  ASSERT_EQ(d.Changed(), m.changed) << where;
  ASSERT_EQ(static_cast<int32_t>(d.SortMode()), m.SortMode()) << where;
  for (int32_t i = 0; i < m.Count(); ++i) {
    ASSERT_EQ(d.Key(Variant(i)), Variant(m.keys[i])) << where << ", key " << i;
    ASSERT_EQ(d.Data(Variant(i)), m.values[i]) << where << ", value " << i;
  }
}

// Runs `steps` random operations on both; `grow` biases towards adding.
void RunSequence(uint32_t seed, int steps, int key_length, int grow) {
  Draw draw(seed, key_length);
  auto d = New<clsZKDictionary>();
  ListModel m;
  std::vector<Variant> heard;
  d->OnChanged([&](const Variant& item) { heard.push_back(item); });

  for (int step = 0; step < steps; ++step) {
    const std::string where =
        "seed " + std::to_string(seed) + ", step " + std::to_string(step);
    const int op = draw.Below(100);
    if (op < grow) {
      const Variant k = draw.Below(8) == 0 ? draw.Item(m.Count()) : Variant(draw.KeyText());
      const Variant v = draw.Value();
      d->Add(k, v);
      m.Add(k, v);
    } else if (op < grow + 12) {
      const Variant item = draw.Item(m.Count());
      d->Remove(item);
      m.Remove(item);
    } else if (op < grow + 24) {
      const Variant item = draw.Item(m.Count());
      const Variant v = draw.Value();
      ASSERT_EQ(ErrorNumberOf([&] { d->LetData(item, v); }),
                ErrorNumberOf([&] { m.LetData(item, v); }))
          << where << ": Data let";
    } else if (op < grow + 36) {
      const Variant item = draw.Item(m.Count());
      const Variant k = draw.Below(6) == 0 ? draw.Item(m.Count()) : Variant(draw.KeyText());
      d->LetKey(item, k);
      m.LetKey(item, k);
    } else if (op < grow + 48) {
      const Variant item = draw.Item(m.Count());
      ASSERT_EQ(d->Exists(item), m.Exists(item)) << where << ": Exists";
      ASSERT_EQ(d->Data(item), m.Data(item)) << where << ": Data";
      ASSERT_EQ(d->Key(item), m.Key(item)) << where << ": Key";
    } else if (op < grow + 52) {
      const int32_t sort = draw.Below(4);
      d->LetSortMode(static_cast<xeTS_DICTIONARY_SORT>(sort));
      m.sort = sort;
    } else if (op < grow + 56) {
      const int32_t compare = draw.Below(2);
      d->LetCompareMode(compare);
      m.compare = compare;
    } else if (op == 99) {
      d->Clear();
      m.Clear();
    }
    ASSERT_EQ(d->Count(), m.Count()) << where;
    ASSERT_EQ(heard, m.events) << where << ": events";
    if (step % 64 == 0) ExpectSameState(*d, m, where);
  }
  ExpectSameState(*d, m, "seed " + std::to_string(seed) + ", end");
}

TEST(DictionaryModel, SmallDictionariesInEveryModeMatchTheModel) {
  ScopedLocale locale("ru_RU");
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    RunSequence(seed, 600, 2, 30);
    if (HasFatalFailure()) return;
  }
}

TEST(DictionaryModel, LargeDictionariesGrowingAndShrinkingMatchTheModel) {
  // Thousands of entries: positions reach several levels of the tree, and removals
  // make its nodes borrow and merge.
  ScopedLocale locale("en_US");
  for (uint32_t seed = 100; seed < 103; ++seed) {
    Draw draw(seed, 7);
    auto d = New<clsZKDictionary>();
    ListModel m;
    const int32_t sort = static_cast<int32_t>(seed % 3);
    d->LetSortMode(static_cast<xeTS_DICTIONARY_SORT>(sort));
    d->LetCompareMode(static_cast<int32_t>(seed % 2));
    m.sort = sort;
    m.compare = static_cast<int32_t>(seed % 2);
    const std::string where = "seed " + std::to_string(seed);
    while (m.Count() < 4500) {
      const Variant k(draw.KeyText());
      const Variant v = draw.Value();
      d->Add(k, v);
      m.Add(k, v);
    }
    ExpectSameState(*d, m, where + ", grown");
    while (m.Count() > 50) {
      const Variant item = draw.Below(3) == 0 ? Variant(m.keys[draw.Below(m.Count())])
                                              : Variant(int32_t{draw.Below(m.Count())});
      d->Remove(item);
      m.Remove(item);
      if (m.Count() % 500 == 0) ExpectSameState(*d, m, where + ", shrinking");
    }
    ExpectSameState(*d, m, where + ", shrunk");
    if (HasFatalFailure()) return;
  }
}

TEST(DictionaryModel, LongSequencesOfMixedOperationsMatchTheModel) {
  ScopedLocale locale("en_US");
  for (uint32_t seed = 500; seed < 506; ++seed) {
    RunSequence(seed, 6000, 5, 45);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace tsruntime
