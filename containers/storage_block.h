// Memory for storage nodes and their lists. Internal to the library.
//
// Reading a storage text makes a node, a child list and an item list per chunk, a
// hundred thousand of each for a long chain. A node and the two lists it makes are
// placed in one block: one allocation instead of three, and a writer walking the tree
// finds a node's lists beside it. Every object of the three classes is preceded by a
// header naming the block it shares, if any; a block is returned when the last of its
// objects is, so a list the host keeps outlives its node as before.
#pragma once

#include <cstddef>

#include "tsruntime/clsZKStorage.h"

namespace tsruntime::storage_block {

// Memory for one object of `size` bytes on its own.
void* AllocateLone(size_t size);

// Memory for a node of `size` bytes with room for its two lists beside it.
void* AllocateNode(size_t size);

// Returns the memory of an object allocated by either function.
void Free(void* object);

// The two lists of the node being constructed at `node`: built in its block when the
// node was just allocated by AllocateNode, on their own otherwise.
void MakeLists(clsZKStorage* node, Ref<clsZKStorageNodes>& nodes, Ref<clsZKStorageItems>& items);

}  // namespace tsruntime::storage_block
