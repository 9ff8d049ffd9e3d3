#include "dictionary_entries.h"

#include <algorithm>
#include <memory>

#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime::dictionary_detail {

namespace {

// Slots per node. A node holds one slot more while it waits to be split.
constexpr int kCapacity = 64;
// A node other than the root that falls below this borrows from or merges with a
// neighbour, which keeps the tree's height logarithmic in its size.
constexpr int kMinimum = kCapacity / 2;

}  // namespace

struct Node {
  explicit Node(bool is_leaf) : leaf(is_leaf) {}
  Inner* parent = nullptr;
  int n = 0;  // slots in use
  const bool leaf;
};

struct Leaf : Node {
  Leaf() : Node(true) {}
  Entry* slot[kCapacity + 1];
  uint64_t order[kCapacity + 1];       // OrderPrefix(slot[i]->key)
  // The prefix of slot[i]'s text sort key, valid while its generation is the list's;
  // the two side by side, so that a probe reads one cache line.
  struct TextOrder {
    uint64_t prefix;
    uint32_t generation;
  } text[kCapacity + 1];
};

struct Inner : Node {
  Inner() : Node(false) {}
  Node* kid[kCapacity + 1];
  size_t count[kCapacity + 1];  // entries under each child
};

namespace {

// The first four code units of a key, the first in the top bits: unequal prefixes order
// as the keys do by code unit; equal ones leave the rest of the keys to decide.
uint64_t OrderPrefix(StringView key) {
  uint64_t prefix = 0;
  for (size_t i = 0; i < 4; ++i) prefix = prefix << 16 | (i < key.size() ? key[i] : 0);
  return prefix;
}

int Sign(int x) { return (x > 0) - (x < 0); }

Leaf* AsLeaf(Node* n) { return static_cast<Leaf*>(n); }
Inner* AsInner(Node* n) { return static_cast<Inner*>(n); }

int SlotOf(const Inner* parent, const Node* child) {
  return static_cast<int>(std::find(parent->kid, parent->kid + parent->n, child) - parent->kid);
}

size_t CountUnder(const Node* node) {
  if (node->leaf) return static_cast<size_t>(node->n);
  const Inner* in = static_cast<const Inner*>(node);
  size_t total = 0;
  for (int i = 0; i < in->n; ++i) total += in->count[i];
  return total;
}

void DeleteTree(Node* node) {
  if (node->leaf) {
    Leaf* leaf = AsLeaf(node);
    for (int i = 0; i < leaf->n; ++i) delete leaf->slot[i];
    delete leaf;
    return;
  }
  Inner* in = AsInner(node);
  for (int i = 0; i < in->n; ++i) DeleteTree(in->kid[i]);
  delete in;
}

void DeleteNode(Node* node) {
  if (node->leaf) {
    delete AsLeaf(node);
  } else {
    delete AsInner(node);
  }
}

// Moves elements [from, from + k) of an array holding `src_n` to position `at` of
// one holding `dst_n`.
template <class T>
void MoveRun(T* src, int src_n, int from, int k, T* dst, int dst_n, int at) {
  std::move_backward(dst + at, dst + dst_n, dst + dst_n + k);
  std::copy(src + from, src + from + k, dst + at);
  std::move(src + from + k, src + src_n, src + from);
}

// Moves slots [from, from + k) of `src` to position `at` of `dst`, keeping the back
// pointers of whatever moves (an entry's leaf, a child's parent) right.
void MoveSlots(Node* src, int from, int k, Node* dst, int at) {
  if (src->leaf) {
    Leaf* s = AsLeaf(src);
    Leaf* d = AsLeaf(dst);
    MoveRun(s->slot, s->n, from, k, d->slot, d->n, at);
    MoveRun(s->order, s->n, from, k, d->order, d->n, at);
    MoveRun(s->text, s->n, from, k, d->text, d->n, at);
    for (int i = at; i < at + k; ++i) d->slot[i]->leaf = d;
  } else {
    Inner* s = AsInner(src);
    Inner* d = AsInner(dst);
    MoveRun(s->kid, s->n, from, k, d->kid, d->n, at);
    MoveRun(s->count, s->n, from, k, d->count, d->n, at);
    for (int i = at; i < at + k; ++i) d->kid[i]->parent = d;
  }
  src->n -= k;
  dst->n += k;
}

// The number of entries in slot `i` of `node`: one for a leaf, the child's count for
// an inner node.
size_t SlotWeight(const Node* node, int i) {
  return node->leaf ? 1 : static_cast<const Inner*>(node)->count[i];
}

}  // namespace

EntryList::~EntryList() { clear(); }

std::pair<const Leaf*, int> EntryList::locate(size_t pos) const {
  int level = path_length_ - 1;
  while (level >= 0 && pos - path_[level].start >= path_[level].count) --level;
  if (level < 0) {
    path_[0] = {root_, 0, size_};
    level = 0;
  }
  const Node* node = path_[level].node;
  size_t start = path_[level].start;
  // Every leaf is `height_` levels down: knowing that, the walk never reads a node's
  // header, and a probe that reaches a leaf touches only the slot it compares.
  while (level < height_) {
    const Inner* in = static_cast<const Inner*>(node);
    int i = 0;
    while (pos - start >= in->count[i]) start += in->count[i++];
    node = in->kid[i];
    path_[++level] = {node, start, in->count[i]};
  }
  path_length_ = level + 1;
  return {static_cast<const Leaf*>(node), static_cast<int>(pos - start)};
}

Entry& EntryList::at(size_t pos) const {
  const auto [leaf, i] = locate(pos);
  return *leaf->slot[i];
}

EntryList::Probe EntryList::MakeProbe(StringView key, int32_t mode) {
  Probe probe{key, mode, OrderPrefix(key)};
  if (mode == vbBinaryCompare) return probe;
  std::string locale = CurrentLocale();
  if (text_generation_ == 0 || locale != text_locale_) {
    text_locale_ = std::move(locale);
    ++text_generation_;  // every text key made so far is stale
  }
  probe.order = TextSortKeyPrefix(key);
  return probe;
}

int EntryList::CompareAt(size_t pos, const Probe& probe) const {
  const auto [found, i] = locate(pos);
  Leaf* leaf = const_cast<Leaf*>(found);
  if (probe.mode == vbBinaryCompare) {
    if (leaf->order[i] != probe.order) return leaf->order[i] < probe.order ? -1 : 1;
    return Sign(StringView(leaf->slot[i]->key).compare(probe.key));
  }
  const Entry& entry = *leaf->slot[i];
  Leaf::TextOrder& text = leaf->text[i];
  if (text.generation != text_generation_) {
    text = {TextSortKeyPrefix(entry.key), text_generation_};
  }
  if (text.prefix != probe.order) return text.prefix < probe.order ? -1 : 1;
  // Sort keys order as the collator does, so it decides what their prefixes left open.
  return CompareStrings(entry.key, probe.key, vbTextCompare);
}

Entry* EntryList::find(StringView key) const { return index_.find(key); }

Entry& EntryList::insert(size_t pos, String key, Variant value, const Probe& probe) {
  auto owned = std::make_unique<Entry>();
  owned->key = std::move(key);
  owned->value = std::move(value);
  index_.add(owned.get());
  path_length_ = 0;
  if (!root_) root_ = new Leaf;

  // Appending, the usual case, goes down the last child of every level.
  const bool at_end = pos == size_;
  Node* node = root_;
  while (!node->leaf) {
    Inner* in = AsInner(node);
    int i = 0;
    if (at_end) {
      i = in->n - 1;
    } else {
      while (i < in->n - 1 && pos > in->count[i]) pos -= in->count[i++];
    }
    ++in->count[i];
    node = in->kid[i];
  }
  Leaf* leaf = AsLeaf(node);
  const int at = at_end ? leaf->n : static_cast<int>(pos);
  std::move_backward(leaf->slot + at, leaf->slot + leaf->n, leaf->slot + leaf->n + 1);
  std::move_backward(leaf->order + at, leaf->order + leaf->n, leaf->order + leaf->n + 1);
  std::move_backward(leaf->text + at, leaf->text + leaf->n, leaf->text + leaf->n + 1);
  Entry* entry = owned.release();
  leaf->slot[at] = entry;
  leaf->order[at] = OrderPrefix(entry->key);
  // A text order from the probe is current; without one it is made when first probed.
  leaf->text[at] = probe.mode == vbBinaryCompare ? Leaf::TextOrder{0, 0}
                                                 : Leaf::TextOrder{probe.order, text_generation_};
  entry->leaf = leaf;
  ++leaf->n;
  ++size_;
  if (leaf->n > kCapacity) splitLeaf(leaf, at_end);
  return *entry;
}

namespace {

// A node split by an append keeps all it can: more appends follow, and the nodes left
// behind stay full instead of half empty. Only the last node of a level is then below
// the minimum, which removals put right.
int KeepOnSplit(const Node* node, bool appending) {
  return appending ? kCapacity : node->n / 2;
}

}  // namespace

void EntryList::splitLeaf(Leaf* leaf, bool appending) {
  Leaf* right = new Leaf;
  const int keep = KeepOnSplit(leaf, appending);
  MoveSlots(leaf, keep, leaf->n - keep, right, 0);
  linkAfter(leaf, right, static_cast<size_t>(leaf->n), static_cast<size_t>(right->n), appending);
}

void EntryList::splitInner(Inner* inner, bool appending) {
  Inner* right = new Inner;
  const int keep = KeepOnSplit(inner, appending);
  MoveSlots(inner, keep, inner->n - keep, right, 0);
  linkAfter(inner, right, CountUnder(inner), CountUnder(right), appending);
}

// Puts `right` just after `left` under `left`'s parent (a new root when `left` was
// the root), splitting the parent in turn when it overflows.
void EntryList::linkAfter(Node* left, Node* right, size_t left_count, size_t right_count,
                          bool appending) {
  Inner* parent = left->parent;
  if (!parent) {
    parent = new Inner;
    parent->kid[0] = left;
    parent->n = 1;
    left->parent = parent;
    root_ = parent;
    ++height_;
  }
  const int j = SlotOf(parent, left);
  std::move_backward(parent->kid + j + 1, parent->kid + parent->n, parent->kid + parent->n + 1);
  std::move_backward(parent->count + j + 1, parent->count + parent->n,
                     parent->count + parent->n + 1);
  parent->kid[j + 1] = right;
  parent->count[j] = left_count;
  parent->count[j + 1] = right_count;
  right->parent = parent;
  ++parent->n;
  if (parent->n > kCapacity) splitInner(parent, appending);
}

void EntryList::erase(Entry& entry) {
  // The value goes last, once the list is whole again: releasing it may run a host's
  // code, which may reach this list.
  const Variant released = std::move(entry.value);
  index_.remove(&entry);
  path_length_ = 0;
  Leaf* leaf = entry.leaf;
  const auto i = std::find(leaf->slot, leaf->slot + leaf->n, &entry) - leaf->slot;
  std::move(leaf->slot + i + 1, leaf->slot + leaf->n, leaf->slot + i);
  std::move(leaf->order + i + 1, leaf->order + leaf->n, leaf->order + i);
  std::move(leaf->text + i + 1, leaf->text + leaf->n, leaf->text + i);
  --leaf->n;
  for (Node* child = leaf; child->parent; child = child->parent) {
    --child->parent->count[SlotOf(child->parent, child)];
  }
  delete &entry;
  --size_;
  rebalance(leaf);
}

void EntryList::rebalance(Node* node) {
  while (node != root_ && node->n < kMinimum) {
    Inner* parent = node->parent;
    const int j = SlotOf(parent, node);
    // Work on a pair of neighbours: the node and the one to its left, or to its
    // right when it is the first child.
    const int l = j > 0 ? j - 1 : 0;
    Node* left = parent->kid[l];
    Node* right = parent->kid[l + 1];
    if (left->n + right->n <= kCapacity) {
      MoveSlots(right, 0, right->n, left, left->n);
      parent->count[l] += parent->count[l + 1];
      std::move(parent->kid + l + 2, parent->kid + parent->n, parent->kid + l + 1);
      std::move(parent->count + l + 2, parent->count + parent->n, parent->count + l + 1);
      --parent->n;
      DeleteNode(right);
      node = parent;
      continue;
    }
    // The neighbour has plenty: take one slot from it.
    if (node == right) {
      const size_t w = SlotWeight(left, left->n - 1);
      MoveSlots(left, left->n - 1, 1, right, 0);
      parent->count[l] -= w;
      parent->count[l + 1] += w;
    } else {
      const size_t w = SlotWeight(right, 0);
      MoveSlots(right, 0, 1, left, left->n);
      parent->count[l] += w;
      parent->count[l + 1] -= w;
    }
    break;
  }
  while (root_ && !root_->leaf && root_->n == 1) {
    Inner* old = AsInner(root_);
    root_ = old->kid[0];
    --height_;
    root_->parent = nullptr;
    delete old;
  }
  if (root_ && root_->leaf && root_->n == 0) {
    delete AsLeaf(root_);
    root_ = nullptr;
  }
}

void EntryList::clear() {
  // Emptied before the entries are freed, for the same reason as in erase.
  Node* old = std::exchange(root_, nullptr);
  height_ = 0;
  index_.clear();
  path_length_ = 0;
  size_ = 0;
  if (old) DeleteTree(old);
}

void EntryList::forEach(const std::function<void(const Entry&)>& visit) const {
  if (!root_) return;
  // Depth-first, left to right; the tree is only a few levels deep.
  std::function<void(const Node*)> walk = [&](const Node* node) {
    if (node->leaf) {
      const Leaf* leaf = static_cast<const Leaf*>(node);
      for (int i = 0; i < leaf->n; ++i) visit(*leaf->slot[i]);
      return;
    }
    const Inner* in = static_cast<const Inner*>(node);
    for (int i = 0; i < in->n; ++i) walk(in->kid[i]);
  };
  walk(root_);
}

}  // namespace tsruntime::dictionary_detail
