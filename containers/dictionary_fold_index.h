// The dictionary's keyed lookup: entries by their key, blind to letter case.
//
// An open-addressing table of (hash, entry) pairs with linear probing, at most half
// full. A lookup reads one run of adjacent slots and fetches an entry only when its
// hash matches, where a node-based map would chase two or three pointers; adding takes
// no allocation of its own. Removal shifts the rest of the run back, so no slot is ever
// a tombstone. Keys are hashed and compared through their case fold (`TextFold` of
// each code unit) as they are read, so no folded copy of a key is ever made.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::dictionary_detail {

// TextFold, with the ASCII letters, most of any key, done here.
inline char16_t Fold(char16_t c) {
  if (c < 0x80) return static_cast<char16_t>(c + (static_cast<char16_t>(c - u'A') < 26 ? 32 : 0));
  return TextFold(c);
}

// Whether the two keys fold to the same text.
inline bool FoldEqual(StringView a, StringView b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && Fold(a[i]) != Fold(b[i])) return false;
  }
  return true;
}

// Four code units of ASCII, as one word, with their letters folded; every lane is
// below 0x80, so no sum carries into the next lane.
inline uint64_t FoldAsciiWord(uint64_t word) {
  constexpr uint64_t kLanes = 0x0001000100010001u;
  const uint64_t from_a = word + (0x80 - u'A') * kLanes;      // lane >= 0x80 from 'A'
  const uint64_t past_z = word + (0x80 - u'Z' - 1) * kLanes;  // lane >= 0x80 past 'Z'
  return word | ((from_a & ~past_z & 0x80 * kLanes) >> 2);
}

// A hash of the key's fold, four code units to a step.
inline uint64_t FoldHash(StringView key) {
  constexpr uint64_t kMultiplier = 0x9E3779B97F4A7C15u;
  constexpr uint64_t kHighBits = 0xFF80FF80FF80FF80u;
  uint64_t h = key.size() * kMultiplier;
  size_t i = 0;
  for (; i + 4 <= key.size(); i += 4) {
    uint64_t word;
    std::memcpy(&word, key.data() + i, sizeof word);
    if ((word & kHighBits) == 0) {
      word = FoldAsciiWord(word);
    } else {
      word = uint64_t{Fold(key[i])} | uint64_t{Fold(key[i + 1])} << 16 |
             uint64_t{Fold(key[i + 2])} << 32 | uint64_t{Fold(key[i + 3])} << 48;
    }
    h = (h ^ word) * kMultiplier;
    h ^= h >> 29;
  }
  uint64_t tail = 0;
  for (int shift = 0; i < key.size(); ++i, shift += 16) tail |= uint64_t{Fold(key[i])} << shift;
  h = (h ^ tail) * kMultiplier;
  // The low bits pick the slot: every input bit must reach them.
  h ^= h >> 32;
  h *= 0xD6E8FEB86659FD93u;
  return h ^ (h >> 32);
}

template <class Entry>
class FoldIndex {
 public:
  // The entry whose key folds as `key` does, or null.
  Entry* find(StringView key) const {
    if (slots_.empty()) return nullptr;
    const uint64_t h = FoldHash(key);
    for (size_t i = Home(h);; i = Next(i)) {
      const Slot& s = slots_[i];
      if (!s.entry) return nullptr;
      if (s.hash == h && FoldEqual(s.entry->key, key)) return s.entry;
    }
  }

  // Adds `entry`, whose key no entry in the index folds to.
  void add(Entry* entry) {
    if (2 * (used_ + 1) > slots_.size()) Grow();
    Place(Slot{FoldHash(entry->key), entry});
    ++used_;
  }

  // Removes `entry`, which is in the index.
  void remove(const Entry* entry) {
    size_t i = Home(FoldHash(entry->key));
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
