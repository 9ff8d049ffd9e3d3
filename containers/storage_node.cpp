#include "storage_block.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime {

clsZKStorage::clsZKStorage() { storage_block::MakeLists(this, nodes_, items_); }

void* clsZKStorage::operator new(size_t size) { return storage_block::AllocateNode(size); }
void clsZKStorage::operator delete(void* p) { storage_block::Free(p); }
void* clsZKStorageNodes::operator new(size_t size) { return storage_block::AllocateLone(size); }
void clsZKStorageNodes::operator delete(void* p) { storage_block::Free(p); }
void* clsZKStorageItems::operator new(size_t size) { return storage_block::AllocateLone(size); }
void clsZKStorageItems::operator delete(void* p) { storage_block::Free(p); }

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
          .Help(u"A node of the storage tree: a Name, its child Nodes and its typed Items, kept "
                u"as storage text in strings and files.")
          .Get("Nodes", &clsZKStorage::Nodes)
          .Help(u"The node's children (clsZKStorageNodes); assigning another list makes this node "
                u"share it.")
          .Set("Nodes", &clsZKStorage::SetNodes, {"RHS"})
          .Get("Items", &clsZKStorage::Items)
          .Help(u"The node's values (clsZKStorageItems); assigning another list makes this node "
                u"share it.")
          .Set("Items", &clsZKStorage::SetItems, {"RHS"})
          .Let("Name", &clsZKStorage::LetName, {"RHS"})
          .Help(u"The node's name; empty at creation, need not be unique.")
          .Get("Name", &clsZKStorage::Name)
          .Method("Clear", &clsZKStorage::Clear)
          .Help(u"Empties Name, then clears Nodes, every node below, and Items; the lists "
                u"themselves stay.")
          .Method("ToString", &clsZKStorage::ToString, {"ErrFlag"})
          .Help(u"The node and everything below as storage text; ErrFlag comes back True, with "
                u"\"\", when its Nodes or Items is Nothing.")
          .Method("ToObject", &clsZKStorage::ToObject, {"strData"})
          .Help(u"Clears the node and reads the storage text strData into it; True when every "
                u"level read, never raises.")
          .Method("Save", &clsZKStorage::Save, {"FileFullName"})
          .Help(u"Writes ToString to the file FileFullName as UTF-16 text, replacing it whole; "
                u"True when written, never raises.")
          .Method("Load", &clsZKStorage::Load, {"FileFullName"})
          .Help(u"Reads the file FileFullName written by Save into the node; False, the node "
                u"kept, when it cannot be read.")
          .Build();
  return info;
}

}  // namespace tsruntime
