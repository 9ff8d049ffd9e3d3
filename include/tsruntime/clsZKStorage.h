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
struct StorageText;

// A node of the tree. Creating one creates its own empty `Nodes` and `Items`.
class clsZKStorage : public Object {
 public:
  clsZKStorage();
  TSRUNTIME_CLASS_INFO;

  // A node is allocated in one block with the two lists it makes; the block is
  // returned when the last of the three is released.
  static void* operator new(size_t size);
  static void operator delete(void* p);

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

  // The node as storage text: chunk(Name), chunk(Nodes.ToString), chunk(Items.ToString),
  // where chunk(X) is X's length + 9 in nine digits, then X. A new node gives
  // "000000009" three times:
  //   node "A" holding the string "B":  "000000010A" "000000009" "0000000230000000140008B"
  // Lengths count UTF-16 code units, so names and values may hold any character.
  // `ErrFlag` is set to False, and to True only when this node's own step fails (its
  // `Nodes` or `Items` is Nothing); the text is then empty. The flags of the levels
  // below are combined into it with And, so a failure below never shows here. A node
  // met again below itself (a cycle) fails its own step at that place, and its chunk
  // there is empty. Deep and wide trees cost time linear in the length of the text.
  String ToString(bool& ErrFlag) const;

  // Empties `Name`, `Nodes` and `Items` (`Clear`), then reads the three chunks of
  // `strData`: the name, the children (`clsZKStorageNodes::ToObject`) and the values
  // (`clsZKStorageItems::ToObject`). True when both lower levels returned True. False
  // for fewer than three chunks (the empty text included) or a length field that is not
  // a number; what was read up to the failure stays, and the tree is then undefined.
  // Chunks are read by trusting their lengths; one that runs past the end is taken
  // short. Never raises.
  bool ToObject(const String& strData);

  // Writes `ToString` to the file as UTF-16 little-endian with no byte-order mark, two
  // bytes per character, through clsZKFileSystem.BinaryWrite (see there how a file is
  // replaced). True when the write succeeded and `ErrFlag` came back False. When it
  // came back True, what was built (an empty text when this node's own step failed) is
  // written all the same, and the result is False. Never raises.
  bool Save(const String& FileFullName) const;

  // Reads the whole file with clsZKFileSystem.BinaryRead and returns `ToObject` of its
  // UTF-16 little-endian text (an odd last byte is ignored). A file that cannot be read
  // (missing, empty) gives False and leaves the node as it was. Never raises.
  bool Load(const String& FileFullName);

 private:
  friend class clsZKStorageNodes;
  friend struct StorageText;

  // Set while the text writer is inside this node, so that a node below it that is this
  // node again (a cycle) is refused.
  mutable bool being_written_ = false;
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

  // May share its memory with the node that made it (see clsZKStorage).
  static void* operator new(size_t size);
  static void operator delete(void* p);

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

  // The children's node texts, each as a chunk, one after the other; the empty string
  // when there are none. `ErrFlag` is set to False, and to True (with an empty text)
  // only when the list's own step fails: a child that is Nothing. Failures inside a
  // child do not show here.
  String ToString(bool& ErrFlag) const;

  // Clears the list (as `Clear`, emptying the old children), then makes one new node
  // per chunk of `strData` with `clsZKStorage::ToObject` and appends those that read
  // True, in order. A chunk that reads False is dropped, its siblings are kept, and the
  // result is False. The empty text gives True and no children. A length field that is
  // not a number, or below 9, fails before any child is made: False. Never raises.
  bool ToObject(const String& strData);

 private:
  friend class clsZKStorage;
  friend struct StorageText;

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

  // May share its memory with the node that made it (see clsZKStorage).
  static void* operator new(size_t size);
  static void operator delete(void* p);

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

  int32_t Count() const { return static_cast<int32_t>(slots_.size()); }

  // One record per value, in order, with nothing between them: the record's length
  // (text length + 13) in nine digits, the type code in four, then the text:
  //   the string "B"  ->  "0000000140008B"
  // The empty string when the list is empty. `ErrFlag` is set to True at the start and
  // to False when the text is complete; the text is built in one buffer of its exact
  // length.
  String ToString(bool& ErrFlag) const;

  // Clears the list, then reads records while the 1-based position is below the length
  // of `strData`: a slot per record holding its type code and text as they stand. A
  // text is only turned into a value when `Item` reads it, so a bad value is not
  // noticed here. True at the end, and for the empty text; False, ending the reading,
  // for a length or type field that does not read as a number or a length below 13. A
  // record that runs past the end is taken short. Never raises.
  bool ToObject(const String& strData);

 private:
  friend struct StorageText;

  // Where a value's text ends in `texts_` (it begins where the one before ends), and
  // its type code.
  struct Slot {
    size_t end;
    int32_t type;
  };

  StringView TextAt(size_t index) const {
    const size_t begin = index == 0 ? 0 : slots_[index - 1].end;
    return StringView(texts_).substr(begin, slots_[index].end - begin);
  }

  // The texts end to end in one buffer: a list of a million values costs two blocks
  // of memory, not a million.
  String texts_;
  std::vector<Slot> slots_;
};

}  // namespace tsruntime
