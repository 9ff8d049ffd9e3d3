// The dictionary's entries: one sequence, addressed by position and by case-blind key.
//
// Positions live in a counted B+tree. Leaves hold the entries in order; inner nodes
// hold, for each child, the number of entries beneath it. Reading, inserting or
// removing at a position is a walk down a tree a few levels deep, so a million entries
// cost no more per operation than a few thousand. Reads remember the last leaf they
// reached, which makes a scan by increasing index, or the last steps of a binary
// search, nearly free. Beside each entry a leaf keeps the first code units of its key
// and the first bytes of its text sort key, so the probes of a sorted insertion mostly
// decide without fetching the entries they pass.
//
// A hash index from the case-folded key to the entry (dictionary_fold_index.h) answers
// keyed lookups without touching the tree. Entries never move in memory once made, so
// the index and the leaves hold plain pointers to them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "dictionary_fold_index.h"
#include "tsruntime/automation/variant.h"

namespace tsruntime::dictionary_detail {

struct Node;
struct Leaf;
struct Inner;

struct Entry {
  String key;
  Variant value;
  Leaf* leaf = nullptr;
};

class EntryList {
 public:
  EntryList() = default;
  ~EntryList();
  EntryList(const EntryList&) = delete;
  EntryList& operator=(const EntryList&) = delete;

  size_t size() const { return size_; }

  // The entry at zero-based position `pos`, which must be below size().
  Entry& at(size_t pos) const;
  // A key to place, prepared once for the probes of a sorted insertion.
  struct Probe {
    StringView key;
    int32_t mode = vbBinaryCompare;  // CompareStrings mode
    uint64_t order = 0;              // OrderPrefix of the key, or of its text sort key
  };
  // Prepares `key` for comparison under `mode`; in text mode, in the thread's locale.
  Probe MakeProbe(StringView key, int32_t mode);
  // CompareStrings(key at `pos`, probe.key, probe.mode): -1, 0 or +1. The leaves keep
  // the first bytes of every key's order beside the entry, so most probes decide without
  // fetching the entry; in text mode those bytes are made once per entry and locale, and
  // only keys that share them are compared through the collator.
  int CompareAt(size_t pos, const Probe& probe) const;

  // The entry whose key equals `key` but for letter case (see FoldCase), or null.
  Entry* find(StringView key) const;

  // Inserts a new entry before position `pos` (size() appends). No entry may have the
  // key but for letter case. `probe`, from the latest MakeProbe of the key, keeps the
  // order of a text-mode key for later probes.
  Entry& insert(size_t pos, String key, Variant value, const Probe& probe);

  // Removes and frees the entry.
  void erase(Entry& entry);

  void clear();

  // Calls `visit` for every entry in order.
  void forEach(const std::function<void(const Entry&)>& visit) const;

 private:
  // The leaf holding position `pos` and the position's slot in it.
  std::pair<const Leaf*, int> locate(size_t pos) const;
  void splitLeaf(Leaf* leaf, bool appending);
  void splitInner(Inner* inner, bool appending);
  void linkAfter(Node* left, Node* right, size_t left_count, size_t right_count, bool appending);
  void rebalance(Node* node);

  Node* root_ = nullptr;
  int height_ = 0;  // inner levels above the leaves
  size_t size_ = 0;
  // The locale the entries' text keys were made in, and its generation: a text key or
  // prefix of another generation is stale.
  std::string text_locale_;
  uint32_t text_generation_ = 0;
  FoldIndex<Entry> index_;
  // The path the last read took, root first: each node with the position of its
  // first entry and its number of entries. The next read climbs only as far as the
  // first node that holds its position, so nearby reads skip most of the descent.
  // Empty after any change.
  struct Step {
    const Node* node;
    size_t start;
    size_t count;
  };
  static constexpr int kMaxHeight = 32;  // nodes hold at least 32 children, so never reached
  mutable Step path_[kMaxHeight];
  mutable int path_length_ = 0;
};

}  // namespace tsruntime::dictionary_detail
