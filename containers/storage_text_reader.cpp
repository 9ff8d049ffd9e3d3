// Reading the node and child-list levels of the storage text.
#include <vector>

#include "../text/packed_fields.h"
#include "storage_text.h"

namespace tsruntime {

struct StorageText::Reader {
  // A list being filled: the chunks of its children, read one at a time. `node` is the
  // node the list belongs to (owned while it is a new child), null for a list read on
  // its own; `ok` starts as that node's own result and turns False when a child fails.
  struct ListFrame {
    clsZKStorage* node;
    Ref<clsZKStorage> owned;
    clsZKStorageNodes* list;
    packed::ChunkReader children{StringView()};
    bool ok = true;
  };

  // A reader over the chunks of a child list, once every length field in it has been
  // found to read: a bad one fails the list before any child is made.
  static bool CheckedChildren(StringView text, packed::ChunkReader& children) {
    return Quietly([&] {
      packed::ChunkReader check(text);
      for (StringView chunk; check.Next(chunk);) {
      }
      children = packed::ChunkReader(text);
      return true;
    });
  }

  // Reads a node's name and items and splits its child list into chunks, leaving the
  // children to the caller.
  static ListFrame BeginNode(clsZKStorage* node, Ref<clsZKStorage> owned, StringView text) {
    ListFrame frame{node, std::move(owned), node->nodes_.get()};
    frame.ok = false;
    // The name, the child list and the items; any further chunks must read too.
    StringView parts[3];
    size_t count = 0;
    if (text.empty() || !Quietly([&] {
          packed::ChunkReader reader(text);
          for (StringView chunk; reader.Next(chunk); ++count) {
            if (count < 3) parts[count] = chunk;
          }
          return true;
        })) {
      return frame;
    }
    node->name_ = String(parts[0]);
    const bool list_ok = count < 2 || parts[1].empty() || CheckedChildren(parts[1], frame.children);
    const bool items_ok = count > 2 && StorageText::ReadItems(*node->items_, parts[2]);
    frame.ok = count > 2 && list_ok && items_ok;
    return frame;
  }

  // Reads the children of the frames on the stack, depth first; a child is appended to
  // its list once all below it has been read and has read True.
  static bool ReadChildren(std::vector<ListFrame>& frames) {
    for (;;) {
      ListFrame& top = frames.back();
      if (StringView chunk; top.children.Next(chunk)) {
        Ref<clsZKStorage> child = New<clsZKStorage>();
        clsZKStorage* raw = child.get();
        frames.push_back(BeginNode(raw, std::move(child), chunk));
        continue;
      }
      ListFrame done = std::move(top);
      frames.pop_back();
      if (frames.empty()) return done.ok;
      if (done.ok) {
        frames.back().list->children_.push_back(std::move(done.owned));
      } else {
        frames.back().ok = false;
      }
    }
  }
};

bool StorageText::ReadNode(clsZKStorage& node, StringView text) {
  std::vector<Reader::ListFrame> frames;
  frames.push_back(Reader::BeginNode(&node, nullptr, text));
  return Reader::ReadChildren(frames);
}

bool StorageText::ReadList(clsZKStorageNodes& list, StringView text) {
  std::vector<Reader::ListFrame> frames;
  frames.push_back(Reader::ListFrame{nullptr, nullptr, &list});
  if (!Reader::CheckedChildren(text, frames.back().children)) return false;
  return Reader::ReadChildren(frames);
}

bool clsZKStorage::ToObject(const String& strData) {
  return Quietly([&] {
    Clear();
    if (!nodes_ || !items_) return false;
    return StorageText::ReadNode(*this, strData);
  });
}

bool clsZKStorageNodes::ToObject(const String& strData) {
  return Quietly([&] {
    Clear();
    return strData.empty() || StorageText::ReadList(*this, strData);
  });
}

}  // namespace tsruntime
