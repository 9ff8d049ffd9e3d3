// Writing the node and child-list levels of the storage text into one buffer.
#include <type_traits>
#include <vector>

#include "../text/packed_fields.h"
#include "storage_text.h"
#include "tsruntime/automation/checked.h"

namespace tsruntime {

using packed::kChunkHeader;

// Stands in for the text in a first pass that only measures it, so that the text is
// then written into a buffer of its exact length: a buffer grown by doubling costs a
// copy of everything written so far and fresh pages at every step.
class StorageText::TextLength {
 public:
  explicit TextLength(size_t start) : size_(start) {}
  size_t size() const { return size_; }
  void append(size_t count, char16_t) { size_ += count; }
  void operator+=(const String& text) { size_ += text.size(); }
  void resize(size_t size) { size_ = size; }

 private:
  size_t size_;
};

template <class Out>
class StorageText::Writer {
 public:
  explicit Writer(Out& out) : out_(out) {}
  ~Writer() {  // also when a step ran out of memory
    for (const Frame& f : frames_) {
      if (f.node) f.node->being_written_ = false;
    }
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  bool Node(const clsZKStorage& node) {
    if (!BeginNode(node)) return false;
    Run();
    return true;
  }

  // The child list on its own: its children's chunks, or nothing when a child is
  // Nothing.
  bool List(const clsZKStorageNodes& list) {
    frames_.push_back({nullptr, &list, out_.size(), 0, 0});
    Run();
    return !list_failed_;
  }

 private:
  // A node whose children are being written. `list_start` is where the list's text
  // begins (after its length field, for a list inside a node).
  struct Frame {
    const clsZKStorage* node;  // null for a list written on its own
    const clsZKStorageNodes* list;
    size_t list_start;
    size_t next_child;
    size_t chunk_start;  // the node's own length field inside its parent's list
  };

  // Starts a node: writes its name chunk and opens its child list. False, writing
  // nothing, when the node cannot be written: a list that is Nothing, or the node is
  // already being written further up (a cycle).
  bool BeginNode(const clsZKStorage& node, size_t chunk_start = 0) {
    if (!node.nodes_ || !node.items_ || node.being_written_) return false;
    const size_t name = OpenChunk();
    out_ += node.name_;
    CloseChunk(name);
    const size_t list = OpenChunk();
    frames_.push_back({&node, node.nodes_.get(), list + kChunkHeader, 0, chunk_start});
    node.being_written_ = true;
    return true;
  }

  void Run() {
    while (!frames_.empty()) {
      Frame& top = frames_.back();
      const auto& children = top.list->children_;
      if (top.next_child < children.size()) {
        const clsZKStorage* child = children[top.next_child++].get();
        if (!child) {
          // The list's own step fails: its text is empty, the rest is not written.
          out_.resize(top.list_start);
          top.next_child = children.size();
          if (!top.node) list_failed_ = true;
          continue;
        }
        const size_t chunk = OpenChunk();
        if (!BeginNode(*child, chunk)) CloseChunk(chunk);
        continue;
      }
      const Frame done = top;
      frames_.pop_back();
      if (!done.node) continue;
      done.node->being_written_ = false;
      CloseChunk(done.list_start - kChunkHeader);
      const size_t items = OpenChunk();
      if constexpr (std::is_same_v<Out, String>) {
        StorageText::AppendItems(out_, *done.node->items_);
      } else {
        out_.append(StorageText::ItemsLength(*done.node->items_), u'0');
      }
      CloseChunk(items);
      if (!frames_.empty()) CloseChunk(done.chunk_start);  // the node is a child
    }
  }

  size_t OpenChunk() {
    const size_t at = out_.size();
    out_.append(kChunkHeader, u'0');
    return at;
  }

  // Fills in the length field at `at` with the length of everything written since.
  void CloseChunk(size_t at) {
    const int64_t length = CheckedLong(static_cast<int64_t>(out_.size() - at));
    if constexpr (std::is_same_v<Out, String>) packed::WriteField(&out_[at], length, kChunkHeader);
  }

  Out& out_;
  std::vector<Frame> frames_;
  bool list_failed_ = false;
};

bool StorageText::AppendNode(String& out, const clsZKStorage& node) {
  TextLength length(out.size());
  if (!Writer<TextLength>(length).Node(node)) return false;
  out.reserve(length.size());
  return Writer<String>(out).Node(node);
}

bool StorageText::AppendList(String& out, const clsZKStorageNodes& list) {
  TextLength length(out.size());
  Writer<TextLength>(length).List(list);
  out.reserve(length.size());
  return Writer<String>(out).List(list);
}

String clsZKStorage::ToString(bool& ErrFlag) const {
  ErrFlag = false;
  String out;
  if (!Quietly([&] { return StorageText::AppendNode(out, *this); })) {
    ErrFlag = true;
    return String();
  }
  return out;
}

String clsZKStorageNodes::ToString(bool& ErrFlag) const {
  ErrFlag = false;
  String out;
  if (children_.empty()) return out;
  if (!Quietly([&] { return StorageText::AppendList(out, *this); })) {
    ErrFlag = true;
    return String();
  }
  return out;
}

}  // namespace tsruntime
