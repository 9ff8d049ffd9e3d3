#include "tsruntime/clsZKStorage.h"

namespace tsruntime {

namespace {

// Children whose release was put off while an outer list was being destroyed; the
// outermost destructor on the thread releases them one by one, so a deep chain of
// nodes is torn down in a loop rather than by recursion.
thread_local std::vector<Ref<clsZKStorage>>* deferred_releases = nullptr;

}  // namespace

clsZKStorageNodes::~clsZKStorageNodes() {
  if (deferred_releases) {
    for (Ref<clsZKStorage>& child : children_) deferred_releases->push_back(std::move(child));
    return;
  }
  std::vector<Ref<clsZKStorage>> pending = std::move(children_);
  deferred_releases = &pending;
  while (!pending.empty()) {
    Ref<clsZKStorage> child = std::move(pending.back());
    pending.pop_back();
    child = nullptr;  // may destroy lists below, which append to `pending`
  }
  deferred_releases = nullptr;
}

void clsZKStorageNodes::Add(Ref<clsZKStorage> objStorage) {
  children_.push_back(std::move(objStorage));
}

// Every node reachable below is cleared once per reference to it. Each list is
// emptied as soon as it is reached, so a node met again (shared, or on a cycle) has
// nothing left to visit, and the work list replaces recursion: depth costs no stack.
void clsZKStorageNodes::Clear() {
  Ref<clsZKStorageNodes> keep_alive;  // clearing may drop the last other reference
  if (RefCount() > 0) keep_alive = Ref<clsZKStorageNodes>(this);
  std::vector<Ref<clsZKStorage>> pending = std::move(children_);
  children_.clear();
  while (!pending.empty()) {
    Ref<clsZKStorage> node = std::move(pending.back());
    pending.pop_back();
    if (!node) continue;
    node->name_.clear();
    if (node->items_) node->items_->Clear();
    if (Ref<clsZKStorageNodes> list = node->nodes_) {
      for (Ref<clsZKStorage>& child : list->children_) pending.push_back(std::move(child));
      list->children_.clear();
    }
  }
}

Ref<clsZKStorage> clsZKStorageNodes::Item(int32_t index) const {
  if (index < 0 || index >= Count()) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  return children_[static_cast<size_t>(index)];
}

void clsZKStorageNodes::SetItem(int32_t index, Ref<clsZKStorage> objStorage) {
  if (index < 0 || index >= Count()) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  children_[static_cast<size_t>(index)] = std::move(objStorage);
}

Ref<Enumerator> clsZKStorageNodes::NewEnum() const {
  return New<Enumerator>(std::vector<Variant>(children_.begin(), children_.end()));
}

TSRUNTIME_DEFINE_CLASS(clsZKStorageNodes) {
  static const ClassInfo info =
      ClassBuilder<clsZKStorageNodes>("clsZKStorageNodes")
          .Help(u"The ordered children of a storage node, held by reference.")
          .Method("Add", &clsZKStorageNodes::Add, {"objStorage"})
          .Help(u"Appends the node objStorage by reference; anything is accepted, Nothing and the "
                u"list's own node too.")
          .Method("Clear", &clsZKStorageNodes::Clear)
          .Help(u"Empties every child, all the way down, also where the host still holds it, and "
                u"removes them from the list.")
          .Get("Count", &clsZKStorageNodes::Count)
          .Help(u"The number of children.")
          .Get("Item", &clsZKStorageNodes::Item, {"index"})
          .Help(u"The child at the zero-based index, the default member; assigning replaces it. "
                u"Error 9 outside 0 to Count - 1.")
          .Set("Item", &clsZKStorageNodes::SetItem, {"index", "objStorage"})
          .Method("NewEnum", &clsZKStorageNodes::NewEnum)
          .Help(u"An enumerator over the children in order, as they are now.")
          .Method("ToString", &clsZKStorageNodes::ToString, {"ErrFlag"})
          .Help(u"The children's storage texts one after the other; ErrFlag comes back True, with "
                u"\"\", when a child is Nothing.")
          .Method("ToObject", &clsZKStorageNodes::ToObject, {"strData"})
          .Help(u"Replaces the children with one new node per chunk of strData; False when a "
                u"chunk does not read, never raises.")
          .Default("Item")
          .Build();
  return info;
}

}  // namespace tsruntime
