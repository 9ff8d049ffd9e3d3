// clsZKDictionary: an ordered key-value container for hosts.
//
// Keys are strings, values are Variants (object references included). Entries keep
// their insertion order, or, while `SortMode` asks for it, are placed in ascending or
// descending key order as they arrive. Directory scanning fills one with file names.
//
//   auto d = tsruntime::New<tsruntime::clsZKDictionary>();
//   d->LetSortMode(tsruntime::xcTS_DICT_SORT_ASC);
//   d->Add(String(u"b"), 2);  d->Add(String(u"a"), 1);
//   d->Key(0);                 // "a"
//   d->Data(String(u"B"));     // 2: keyed lookup ignores letter case, always
//
// Reading the arguments. An argument counts as a key when its Variant type is exactly
// String; every other type (Integer, Long, Double, Boolean, Empty...) is an index,
// converted as the host runtime converts to Long. Indexes are zero-based, except in
// `Exists` and `Add`, which read a number as a one-based position: hosts depend on
// that difference.
//
// Keys. Looking a key up ignores letter case whatever `CompareMode` says, and no two
// entries may have keys that differ only in case. `CompareMode` (0 binary, 1 text)
// only decides the order of sorted insertion and the same-key test of `LetKey`.
//
// Sorted insertion finds its place by binary search over the current entries, so it
// trusts them to be in order already. Entries added while `SortMode` was 0, or under
// another `CompareMode`, are not re-sorted; new ones land where the search leads.
// A key that the search finds equal under `CompareMode` is refused.
//
// Change tracking. `Changed` goes True on every change listed below and back to
// False only on `Clear`. `LetData`, `SetData` and `LetKey` raise the `OnChanged`
// event, synchronously, with the Item the host passed; late-bound sinks receive it as
// "OnChanged" with one argument, ChangedItem.
//
// Speed: reading, inserting and removing at a position, and looking up a key, cost
// a logarithmic walk or a hash lookup; a sorted `Add` costs a binary search of such
// reads, most of them decided by one integer comparison (text compare included, whose
// sort keys are made once per key and thread locale). A million entries are as
// workable as a thousand.
#pragma once

#include <functional>
#include <memory>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/enumerator.h"

namespace tsruntime {

namespace dictionary_detail {
class EntryList;
}

enum xeTS_DICTIONARY_SORT : int32_t {
  xcTS_DICT_SORT_NONE = 0,  // insertion order
  xcTS_DICT_SORT_ASC = 1,
  xcTS_DICT_SORT_DESC = 2,
};

class clsZKDictionary : public Object {
 public:
  clsZKDictionary();
  ~clsZKDictionary() override;
  TSRUNTIME_CLASS_INFO;

  // Adds an entry, unless `Exists(Key)`. `Key` is stored as its text: a number k
  // becomes "k", but is refused while the dictionary holds k or more entries (the
  // one-based reading of `Exists`). On success sets `Changed`. Raises nothing, in
  // particular not for a key it cannot turn into text (Null, an object); raises no
  // event. `vData` left out stores the missing-argument marker.
  //   d->Add(String(u"x"), 1);  d->Add(String(u"X"), 2);  // the second is ignored
  void Add(const Variant& Key, const Variant& vData = Variant::Missing());

  // Removes every entry and sets `Changed` to False. `SortMode` and `CompareMode`
  // stay. No event.
  void Clear();

  int32_t Count() const;

  // By key (a String): removes the entry and sets `Changed` when the key exists,
  // otherwise does nothing. By index: removes the entry at that zero-based index if
  // there is one, and sets `Changed` either way. Raises nothing; no event.
  void Remove(const Variant& Item);

  // The value at a zero-based index, or of a key; a null object reference (Nothing)
  // for an index out of range or a missing key. The default member.
  Variant Data(const Variant& Item) const;

  // Replace an entry's value: the entry is removed and inserted again with the new
  // value, so it moves to the end in insertion order, or back to its place when
  // sorted. A String `Item` also becomes the entry's key as written:
  //   d->LetData(String(u"KEY"), 5);   // the entry "key" is now "KEY" -> 5
  // Then sets `Changed` and raises `OnChanged(Item)` once. A missing key raises
  // invalid procedure call (5), an index out of range subscript out of range (9),
  // and nothing changes. `SetData` is the same for an object reference.
  void LetData(const Variant& Item, const Variant& vData);
  void SetData(const Variant& Item, const Variant& vData);

  // The key at a zero-based index (Empty when out of range). A String `Item` is
  // handed back as given, with no lookup at all, whether or not that key exists:
  //   d->Key(String(u"zz"));   // "zz", even on an empty dictionary
  Variant Key(const Variant& Item) const;

  // Renames an entry: takes its value out, removes it and inserts `NewKey` (as text)
  // with that value; then sets `Changed` and raises `OnChanged(Item)`. An index out
  // of range or a key that does not exist does nothing, and so does a String `Item`
  // equal to `NewKey` under `CompareMode` (under text compare a change of letter case
  // alone is ignored). When `NewKey` is already taken the insertion fails after the
  // removal: the entry is lost, `Count` drops by one, and no event is raised. Raises
  // nothing.
  void LetKey(const Variant& Item, const Variant& NewKey);

  // Enumerates the values (not the keys) in entry order, as they are now.
  Ref<Enumerator> NewEnum() const;

  // 0 binary, 1 text (any other non-zero value compares as text). Stored as given.
  int32_t CompareMode() const { return compare_mode_; }
  void LetCompareMode(int32_t value) { compare_mode_ = value; }

  // Reads the stored mode only while the dictionary is empty; with at least one
  // entry it reads xcTS_DICT_SORT_NONE whatever was set. Setting it is allowed at
  // any time and does not re-sort. 2 sorts descending, any other non-zero value
  // ascending.
  xeTS_DICTIONARY_SORT SortMode() const;
  void LetSortMode(xeTS_DICTIONARY_SORT value) { sort_mode_ = value; }

  bool Changed() const { return changed_; }

  // False on an empty dictionary. A String is looked up as a key, ignoring case; any
  // other value is a ONE-based position: Exists(1) to Exists(Count()) are True.
  bool Exists(const Variant& KeyName) const;

  // Calls `listener` with ChangedItem whenever `OnChanged` is raised; returns a
  // cookie for `Disconnect`. The same delivery as late-bound sinks, in connection
  // order.
  int OnChanged(std::function<void(const Variant& ChangedItem)> listener);

 private:
  bool Insert(String key, Variant value);
  void ReplaceData(const Variant& Item, const Variant& vData);
  void NotifyChanged(const Variant& item);

  std::unique_ptr<dictionary_detail::EntryList> entries_;
  bool changed_ = false;
  xeTS_DICTIONARY_SORT sort_mode_ = xcTS_DICT_SORT_NONE;
  int32_t compare_mode_ = 0;
};

}  // namespace tsruntime
