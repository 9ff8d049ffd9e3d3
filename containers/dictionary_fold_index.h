// The dictionary's keyed lookup: entries by the case fold of their key.
//
// An open-addressing table of (hash, entry) pairs with linear probing, at most half
// full. A lookup reads one run of adjacent slots and fetches an entry only when its
// hash matches, where a node-based map would chase two or three pointers; adding takes
// no allocation of its own. Removal shifts the rest of the run back, so no slot is ever
// a tombstone.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime::dictionary_detail {

template <class Entry>
class FoldIndex {
 public:
  // The entry whose folded key is `folded`, or null.
  Entry* find(StringView folded) const {
    if (slots_.empty()) return nullptr;
    const uint64_t h = Hash(folded);
    for (size_t i = Home(h);; i = Next(i)) {
      const Slot& s = slots_[i];
      if (!s.entry) return nullptr;
      if (s.hash == h && s.entry->foldedKey() == folded) return s.entry;
    }
  }

  // Adds `entry`, whose folded key no entry in the index has.
  void add(Entry* entry) {
    if (2 * (used_ + 1) > slots_.size()) Grow();
    Place(Slot{Hash(entry->foldedKey()), entry});
    ++used_;
  }

  // Removes `entry`, which is in the index.
  void remove(const Entry* entry) {
    size_t i = Home(Hash(entry->foldedKey()));
    while (slots_[i].entry != entry) i = Next(i);
    // Later slots of the run move back into the gap unless their home lies after it.
    for (size_t j = Next(i);; j = Next(j)) {
      if (!slots_[j].entry) break;
      const size_t home = Home(slots_[j].hash);
      const bool stays = i <= j ? (i < home && home <= j) : (i < home || home <= j);
      if (stays) continue;
      slots_[i] = slots_[j];
      i = j;
    }
    slots_[i] = Slot{};
    --used_;
  }

  void clear() {
    slots_.clear();
    used_ = 0;
  }

 private:
  struct Slot {
    uint64_t hash = 0;
    Entry* entry = nullptr;  // null: free
  };

  static uint64_t Hash(StringView folded) { return std::hash<StringView>{}(folded); }
  size_t Home(uint64_t h) const { return static_cast<size_t>(h) & (slots_.size() - 1); }
  size_t Next(size_t i) const { return (i + 1) & (slots_.size() - 1); }

  void Place(const Slot& slot) {
    size_t i = Home(slot.hash);
    while (slots_[i].entry) i = Next(i);
    slots_[i] = slot;
  }

  void Grow() {
    std::vector<Slot> old(slots_.empty() ? 16 : 2 * slots_.size());
    old.swap(slots_);
    for (const Slot& s : old) {
      if (s.entry) Place(s);
    }
  }

  std::vector<Slot> slots_;  // a power of two in size
  size_t used_ = 0;
};

}  // namespace tsruntime::dictionary_detail
