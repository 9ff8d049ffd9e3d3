// The dictionary's entries: one sequence, addressed by position and by case-blind key.
//
// Positions live in a counted B+tree. Leaves hold the entries in order; inner nodes
// hold, for each child, the number of entries beneath it. Reading, inserting or
// removing at a position is a walk down a tree a few levels deep, so a million entries
// cost no more per operation than a few thousand. Reads remember the last leaf they
// reached, which makes a scan by increasing index, or the last steps of a binary
// search, nearly free.
//
// A hash index from the case-folded key to the entry answers keyed lookups without
// touching the tree. Entries never move in memory once made, so the index and the
// leaves hold plain pointers to them.
#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>

#include "tsruntime/automation/variant.h"

namespace tsruntime::dictionary_detail {

struct Node;
struct Leaf;
struct Inner;

struct Entry {
  String key;
  Variant value;
  String folded;  // the key's case fold; empty when the key folds to itself
  Leaf* leaf = nullptr;

  StringView foldedKey() const { return folded.empty() ? StringView(key) : StringView(folded); }
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
  // Its key. The leaves keep a view of every key beside the entry, so a binary search
  // over keys does not have to fetch the entries it passes.
  StringView keyAt(size_t pos) const;

  // The entry whose key folds to `folded` (see FoldCase), or null.
  Entry* find(StringView folded) const;

  // Inserts a new entry before position `pos` (size() appends). `folded` is the key's
  // case fold, and no entry may already have it.
  Entry& insert(size_t pos, String key, String folded, Variant value);

  // Removes and frees the entry.
  void erase(Entry& entry);

  void clear();

  // Calls `visit` for every entry in order.
  void forEach(const std::function<void(const Entry&)>& visit) const;

 private:
  // The leaf holding position `pos` and the position's slot in it.
  std::pair<const Leaf*, int> locate(size_t pos) const;
  void splitLeaf(Leaf* leaf);
  void splitInner(Inner* inner);
  void linkAfter(Node* left, Node* right, size_t left_count, size_t right_count);
  void rebalance(Node* node);

  Node* root_ = nullptr;
  size_t size_ = 0;
  std::unordered_map<StringView, Entry*> index_;
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
