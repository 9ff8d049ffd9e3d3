#include "storage_block.h"

#include <new>

namespace tsruntime::storage_block {

namespace {

struct alignas(alignof(std::max_align_t)) Shared {
  int live;  // objects of the block not yet released
};

struct alignas(alignof(std::max_align_t)) Header {
  Shared* shared;  // null for an object on its own
};

constexpr size_t RoundUp(size_t size) {
  return (size + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) *
         alignof(std::max_align_t);
}

// Shared | Header node | Header child list | Header item list
constexpr size_t kNodeAt = sizeof(Shared) + sizeof(Header);
constexpr size_t kNodesAt = kNodeAt + RoundUp(sizeof(clsZKStorage)) + sizeof(Header);
constexpr size_t kItemsAt = kNodesAt + RoundUp(sizeof(clsZKStorageNodes)) + sizeof(Header);
constexpr size_t kBlockSize = kItemsAt + sizeof(clsZKStorageItems);

// The node last placed by AllocateNode on this thread and not yet constructed: only
// its constructor may build lists in its block, not one of a node made some other way.
thread_local void* unbuilt_node = nullptr;

Header* HeaderOf(void* object) { return static_cast<Header*>(object) - 1; }

void* Place(char* block, size_t at, Shared* shared) {
  HeaderOf(block + at)->shared = shared;
  return block + at;
}

}  // namespace

void* AllocateLone(size_t size) {
  auto* header = static_cast<Header*>(::operator new(sizeof(Header) + size));
  header->shared = nullptr;
  return header + 1;
}

void* AllocateNode(size_t size) {
  if (size != sizeof(clsZKStorage)) return AllocateLone(size);
  char* block = static_cast<char*>(::operator new(kBlockSize));
  Shared* shared = ::new (block) Shared{1};
  unbuilt_node = Place(block, kNodeAt, shared);
  return unbuilt_node;
}

void Free(void* object) {
  Header* header = HeaderOf(object);
  if (!header->shared) {
    ::operator delete(header);
  } else if (--header->shared->live == 0) {
    ::operator delete(header->shared);
  }
}

void MakeLists(clsZKStorage* node, Ref<clsZKStorageNodes>& nodes, Ref<clsZKStorageItems>& items) {
  if (node != unbuilt_node) {
    nodes = New<clsZKStorageNodes>();
    items = New<clsZKStorageItems>();
    return;
  }
  unbuilt_node = nullptr;
  Shared* shared = HeaderOf(node)->shared;
  char* block = reinterpret_cast<char*>(shared);  // the block begins with its count
  // Neither constructor allocates, so neither can fail half-way.
  nodes = Ref<clsZKStorageNodes>(::new (Place(block, kNodesAt, shared)) clsZKStorageNodes());
  ++shared->live;
  items = Ref<clsZKStorageItems>(::new (Place(block, kItemsAt, shared)) clsZKStorageItems());
  ++shared->live;
}

}  // namespace tsruntime::storage_block
