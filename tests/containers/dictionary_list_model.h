// The dictionary as a plain model: one list, linear lookups and inserts by shifting,
// each operation written step by step as the dictionary is meant to behave. Shared by
// the differential test and the fuzz target.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include "support.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime::container_tests {

inline bool IsKey(const Variant& v) { return v.type() == VarType::kString; }

inline void Swallow(const std::function<void()>& f) { ErrorNumberOf(f); }

inline int32_t LongOr(const Variant& v, int32_t fallback) {
  Swallow([&] { fallback = ToLong(v); });
  return fallback;
}

struct ListModel {
  struct Entry { String key, upper; Variant value; };
  std::vector<Entry> list;
  bool changed = false;
  int32_t sort = 0, compare = 0;
  std::vector<Variant> events;
  // Called after each event is recorded, as a host's OnChanged handler runs.
  std::function<void(const Variant& item)> on_changed;

  int32_t Count() const { return static_cast<int32_t>(list.size()); }

  // Zero-based index of a key, letter case ignored, or -1.
  int Find(StringView k) const {
    const String wanted = ToUpper(k);
    auto it = std::find_if(list.begin(), list.end(), [&](auto& e) { return e.upper == wanted; });
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
  }
  // Where a key (any case) or a zero-based index points, or -1.
  int Locate(const Variant& item) const {
    if (IsKey(item)) return Find(item.asString());
    const int32_t i = LongOr(item, -1);
    return i >= 0 && i < Count() ? i : -1;
  }

  bool Exists(const Variant& k) const {
    if (IsKey(k)) return Find(k.asString()) >= 0;
    const int32_t n = LongOr(k, 0);  // one-based
    return n >= 1 && n <= Count();
  }

  // Where K goes, by the binary search over one-based positions as written; 0 refuses K.
  int Position(const String& k) const {
    if (sort == 0 || list.empty()) return Count() + 1;
    const int sign = sort == 2 ? -1 : 1;
    for (int lo = 1, hi = Count();;) {
      const int mid = (lo + hi) / 2;
      const int c = CompareStrings(list[mid - 1].key, k, compare) * sign;
      if (c == 0) return 0;
      if (c == -1 && (lo = mid + 1) > hi) return lo;
      if (c == 1 && (hi = mid) == lo) return mid;
    }
  }
  bool Insert(const String& k, const Variant& v) {
    const int pos = Position(k);
    if (pos == 0 || Find(k) >= 0) return false;
    list.insert(list.begin() + (pos - 1), Entry{k, ToUpper(k), v});
    return true;
  }
  // Removes entry i, then inserts `key` as text with `v`; on success reports `item`.
  void Reinsert(int i, Variant key, Variant v, const Variant& item) {
    list.erase(list.begin() + i);
    if (!Insert(ToString(key), v)) return;
    changed = true;
    events.push_back(item);
    if (on_changed) on_changed(item);
  }

  void Add(const Variant& k, const Variant& v) {
    Swallow([&] { changed |= !Exists(k) && Insert(ToString(k), v); });
  }
  void Remove(const Variant& item) {
    const int i = Locate(item);
    if (i >= 0) list.erase(list.begin() + i);
    if (i >= 0 || !IsKey(item)) changed = true;
  }
  void Clear() { list.clear(), changed = false; }
  void LetData(const Variant& item, const Variant& v) {
    const int i = IsKey(item) ? Find(item.asString()) : ToLong(item);
    if (IsKey(item) && i < 0) RaiseRuntime(RuntimeError::kInvalidCall);
    if (i < 0 || i >= Count()) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    Reinsert(i, IsKey(item) ? item : Variant(list[i].key), v, item);
  }
  void LetKey(const Variant& item, const Variant& new_key) {
    Swallow([&] {
      if (IsKey(item) && CompareStrings(item.asString(), ToString(new_key), compare) == 0) return;
      if (const int i = Locate(item); i >= 0) Reinsert(i, new_key, list[i].value, item);
    });
  }
};

}  // namespace tsruntime::container_tests
