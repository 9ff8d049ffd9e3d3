// Writing and reading the storage text, shared by the three levels of the tree.
// Internal to the library.
//
// Both directions walk the tree with an explicit stack rather than by recursion, so a
// chain of nodes of any depth costs no machine stack, and both work on one buffer:
// the writer leaves each length field blank, writes what the chunk holds, then fills
// the field in, so no level's text is copied once per ancestor; the reader hands each
// level a view into the text it was given.
#pragma once

#include <new>

#include "tsruntime/clsZKStorage.h"

namespace tsruntime {

// Runs `step`; a failure inside it, the runtime's or lack of memory, gives False, as
// none of the text operations raises to the host.
template <class F>
bool Quietly(F&& step) {
  try {
    return step();
  } catch (const Error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

struct StorageText {
  // Width of the type field of an item record, and a record's fixed part.
  static constexpr size_t kTypeField = 4;
  static constexpr size_t kRecordHeader = 13;

  // Appends the item records of `items` to `out`.
  static void AppendItems(String& out, const clsZKStorageItems& items);
  // The length of those records.
  static size_t ItemsLength(const clsZKStorageItems& items);
  // Fills the cleared `items` from `text`; the result of clsZKStorageItems::ToObject.
  static bool ReadItems(clsZKStorageItems& items, StringView text);

  // Appends the node text of `node` to `out`; False (with nothing appended) when the
  // node's own step fails.
  static bool AppendNode(String& out, const clsZKStorage& node);
  // Appends the child-list text of `list`; False (with nothing appended) when the list's
  // own step fails.
  static bool AppendList(String& out, const clsZKStorageNodes& list);

  // Fills the cleared `node` from `text`; the result of clsZKStorage::ToObject.
  static bool ReadNode(clsZKStorage& node, StringView text);
  // Fills the cleared `list` from the non-empty `text`; the result of
  // clsZKStorageNodes::ToObject.
  static bool ReadList(clsZKStorageNodes& list, StringView text);

 private:
  class TextLength;
  template <class Out>
  class Writer;
  struct Reader;
};

}  // namespace tsruntime
