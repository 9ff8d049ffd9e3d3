#include "tsruntime/clsZKStorage.h"

namespace tsruntime {

clsZKStorage::clsZKStorage()
    : nodes_(New<clsZKStorageNodes>()), items_(New<clsZKStorageItems>()) {}

void clsZKStorage::Clear() {
  Ref<clsZKStorage> keep_alive;  // a cycle through this node may hold its last reference
  if (RefCount() > 0) keep_alive = Ref<clsZKStorage>(this);
  name_.clear();
  if (nodes_) nodes_->Clear();
  if (items_) items_->Clear();
}

TSRUNTIME_DEFINE_CLASS(clsZKStorage) {
  static const ClassInfo info =
      ClassBuilder<clsZKStorage>("clsZKStorage")
          .Get("Nodes", &clsZKStorage::Nodes)
          .Set("Nodes", &clsZKStorage::SetNodes, {"RHS"})
          .Get("Items", &clsZKStorage::Items)
          .Set("Items", &clsZKStorage::SetItems, {"RHS"})
          .Let("Name", &clsZKStorage::LetName, {"RHS"})
          .Get("Name", &clsZKStorage::Name)
          .Method("Clear", &clsZKStorage::Clear)
          .Method("ToString", &clsZKStorage::ToString, {"ErrFlag"})
          .Method("ToObject", &clsZKStorage::ToObject, {"strData"})
          .Method("Save", &clsZKStorage::Save, {"FileFullName"})
          .Method("Load", &clsZKStorage::Load, {"FileFullName"})
          .Build();
  return info;
}

}  // namespace tsruntime
