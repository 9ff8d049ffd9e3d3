// The storage tree: named nodes, each with an ordered list of typed values and an
// ordered list of child nodes, for structured settings or documents.
//
//   auto root = tsruntime::New<tsruntime::clsZKStorage>();
//   root->LetName(u"settings");
//   root->Items()->Add(int32_t{42});        // True
//   auto child = tsruntime::New<tsruntime::clsZKStorage>();
//   root->Nodes()->Add(child);
//   root->Items()->Item(0);                  // Long 42
//
// Three classes form it:
//   clsZKStorage       a node: `Name`, its `Nodes` and its `Items`.
//   clsZKStorageNodes  the node's children, held by reference, in order.
//   clsZKStorageItems  the node's values, each held as text with its type code.
//
// Children are references, not copies: the same node may appear twice, in one list
// or in several, and a node may even be added under itself. Such a cycle keeps its
// nodes alive after the host lets go of them; break it with `Clear` first. `Clear`
// itself copes with shared and cyclic structures of any depth.
#pragma once

#include <vector>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/enumerator.h"
#include "tsruntime/errors.h"

namespace tsruntime {

class clsZKStorageNodes;
class clsZKStorageItems;

// A node of the tree. Creating one creates its own empty `Nodes` and `Items`.
class clsZKStorage : public Object {
 public:
  clsZKStorage();
  TSRUNTIME_CLASS_INFO;

  // The node's children. Replaceable by reference: after `SetNodes(other)` this
  // node and whoever else holds `other` share it. Nothing is accepted too; the node
  // then has no children list (and `Clear` skips it) until another is set.
  Ref<clsZKStorageNodes> Nodes() const { return nodes_; }
  void SetNodes(Ref<clsZKStorageNodes> RHS) { nodes_ = std::move(RHS); }

  // The node's values; replaceable by reference, like `Nodes`.
  Ref<clsZKStorageItems> Items() const { return items_; }
  void SetItems(Ref<clsZKStorageItems> RHS) { items_ = std::move(RHS); }

  // Empty at creation; need not be unique, may be empty.
  String Name() const { return name_; }
  void LetName(String RHS) { name_ = std::move(RHS); }

  // Empties `Name`, then clears `Nodes` (see clsZKStorageNodes::Clear: every node
  // below is emptied too) and `Items`. The lists themselves are kept.
  void Clear();

 private:
  friend class clsZKStorageNodes;

  Ref<clsZKStorageNodes> nodes_;
  Ref<clsZKStorageItems> items_;
  String name_;
};

// The ordered children of a node.
class clsZKStorageNodes : public Object {
 public:
  clsZKStorageNodes() = default;
  ~clsZKStorageNodes() override;
  TSRUNTIME_CLASS_INFO;

  // Appends the node, by reference, at the end. No checks: the same node twice, the
  // list's own node, even Nothing, are all accepted.
  void Add(Ref<clsZKStorage> objStorage);

  // Clears every child (its name, items and children, all the way down) and removes
  // it from the list. The children themselves are emptied, also where the host still
  // holds them:
  //   auto kept = root->Nodes()->Item(0);
  //   root->Nodes()->Clear();   // kept->Name() is now "", its lists are empty
  void Clear();

  int32_t Count() const { return static_cast<int32_t>(children_.size()); }

  // The child at a zero-based index; subscript out of range (9) outside 0..Count-1.
  // The default member.
  Ref<clsZKStorage> Item(int32_t index) const;
  // Replaces the child at a zero-based index; subscript out of range (9) likewise.
  void SetItem(int32_t index, Ref<clsZKStorage> objStorage);

  // Enumerates the children in order, as they are now.
  Ref<Enumerator> NewEnum() const;

 private:
  friend class clsZKStorage;

  std::vector<Ref<clsZKStorage>> children_;
};

// The ordered, typed values of a node. Each value is kept as text beside its type
// code, and rebuilt from the text when read:
//
//   Null                          ""                       -> Null
//   Integer, Long, Single, Double,
//   Currency, Decimal, Byte       the number in the thread's locale ("1,5" in
//                                 Russian)                 -> the same type
//   Date                          "yyyy-mm-dd hh:nn:ss"    -> Date
//   String                        the string               -> String
//   Boolean                       "1" for True, ""         -> True when not empty
//   Byte array                    one character per byte through the ANSI code page
//                                                          -> Byte array
//   any other array               "" with its type code    -> `Item` refuses it
//
// Empty, objects, Error values and every other type are refused by `Add`.
class clsZKStorageItems : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // Appends the value in its text form and returns True; returns False and changes
  // nothing for a refused type or a value that cannot be turned into text (a byte
  // array that was never dimensioned, a date out of range).
  //   items->Add(Variant());          // False: Empty is refused
  //   items->Add(Date::FromParts({2024, 3, 5, 14, 7, 9}));   // "2024-03-05 14:07:09"
  bool Add(const Variant& value);

  // The value at a zero-based index, rebuilt from its text. The checks run in this
  // order and raise with the source "ZKRuntimeLib.clsZKStorageItems.Item", the text
  // in the thread's interface language (Russian for 0, English otherwise):
  //   index < 0            xcZKERR_STORAGE_NOITEMS   "Нет данных в хранилище" /
  //                                                  "Storage is Empty"
  //   index >= Count()     xcZKERR_STORAGE_INDEX     "Недопустимый индекс элемента" /
  //                                                  "Index out of bounds"
  //   type not readable    xcZKERR_STORAGE_DATATYPE  "Тип данных #8195 не поддерживается" /
  //                                                  "Data type #8195 is not supported"
  // So a negative index says the storage is empty while index 0 of an empty list is
  // out of bounds. A text that no longer reads as its type (a number written under
  // another locale) raises the runtime's type mismatch (13). The default member.
  Variant Item(int32_t index) const;

  // Empties the list.
  void Clear();

  int32_t Count() const { return static_cast<int32_t>(texts_.size()); }

 private:
  std::vector<int32_t> types_;
  std::vector<String> texts_;
};

}  // namespace tsruntime
