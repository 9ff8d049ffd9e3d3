#include "tsruntime/clsZKDictionary.h"

#include "dictionary_entries.h"
#include "tsruntime/automation/compare.h"

namespace tsruntime {

using dictionary_detail::Entry;
using dictionary_detail::EntryList;

namespace {

// Only a String is a key; every other type, Boolean and Empty included, is an index.
bool IsKey(const Variant& item) { return item.type() == VarType::kString; }

// The index an argument stands for, or -1 when it names no entry of `list`: out of
// range, or not convertible to Long.
int64_t IndexIn(const EntryList& list, const Variant& item) {
  try {
    const int32_t i = ToLong(item);
    if (i >= 0 && static_cast<size_t>(i) < list.size()) return i;
  } catch (const Error&) {
  }
  return -1;
}

}  // namespace

clsZKDictionary::clsZKDictionary() : entries_(std::make_unique<EntryList>()) {}

clsZKDictionary::~clsZKDictionary() = default;

// Places `key` with `value`: at the end in insertion order (or when empty), else
// where a binary search over the positions under `CompareMode` leads. The search
// visits exactly the positions lo..hi halving would, so its result is the same even
// when the entries are not in order.
bool clsZKDictionary::Insert(String key, Variant value) {
  if (entries_->find(key)) return false;
  const size_t n = entries_->size();
  size_t before = n;  // zero-based position to insert at
  EntryList::Probe probe{};
  if (sort_mode_ != xcTS_DICT_SORT_NONE && n > 0) {
    const int sign = sort_mode_ == xcTS_DICT_SORT_DESC ? -1 : 1;
    // Any mode other than binary compares as text.
    const int32_t mode = compare_mode_ == vbBinaryCompare ? vbBinaryCompare : vbTextCompare;
    probe = entries_->MakeProbe(key, mode);
    size_t lo = 1, hi = n;
    for (;;) {
      const size_t mid = (lo + hi) / 2;
      const int c = entries_->CompareAt(mid - 1, probe) * sign;
      if (c < 0) {
        lo = mid + 1;
        if (lo > hi) {
          before = lo - 1;
          break;
        }
      } else if (c > 0) {
        hi = mid;
        if (lo == mid) {
          before = mid - 1;
          break;
        }
      } else {
        return false;
      }
    }
  }
  entries_->insert(before, std::move(key), std::move(value), probe);
  return true;
}

void clsZKDictionary::NotifyChanged(const Variant& item) {
  std::vector<Variant> args{item};
  RaiseEvent(u"OnChanged", args);
}

void clsZKDictionary::Add(const Variant& Key, const Variant& vData) {
  // For a String the insertion's own keyed check is the Exists test.
  if (!IsKey(Key) && Exists(Key)) return;
  try {
    if (Insert(ToString(Key), vData)) changed_ = true;
  } catch (const Error&) {
  }
}

void clsZKDictionary::Clear() {
  entries_->clear();
  changed_ = false;
}

int32_t clsZKDictionary::Count() const { return static_cast<int32_t>(entries_->size()); }

void clsZKDictionary::Remove(const Variant& Item) {
  if (IsKey(Item)) {
    if (Entry* e = entries_->find(Item.asString())) {
      entries_->erase(*e);
      changed_ = true;
    }
    return;
  }
  const int64_t i = IndexIn(*entries_, Item);
  if (i >= 0) entries_->erase(entries_->at(static_cast<size_t>(i)));
  changed_ = true;
}

Variant clsZKDictionary::Data(const Variant& Item) const {
  const Entry* e = nullptr;
  if (IsKey(Item)) {
    e = entries_->find(Item.asString());
  } else if (const int64_t i = IndexIn(*entries_, Item); i >= 0) {
    e = &entries_->at(static_cast<size_t>(i));
  }
  return e ? e->value : Variant::Nothing();
}

// No error trap here: a failed lookup reaches the host with nothing changed.
void clsZKDictionary::ReplaceData(const Variant& Item, const Variant& vData) {
  const Variant item = Item;  // the event reports it after the entry is gone
  Variant value = vData;
  Entry* e;
  String key;
  if (IsKey(item)) {
    e = entries_->find(item.asString());
    if (!e) RaiseRuntime(RuntimeError::kInvalidCall);
    key = item.asString();
  } else {
    const int32_t i = ToLong(item);
    if (i < 0 || static_cast<size_t>(i) >= entries_->size()) {
      RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    }
    e = &entries_->at(static_cast<size_t>(i));
    key = e->key;
  }
  entries_->erase(*e);
  if (Insert(std::move(key), std::move(value))) {
    changed_ = true;
    NotifyChanged(item);
  }
}

void clsZKDictionary::LetData(const Variant& Item, const Variant& vData) {
  ReplaceData(Item, vData);
}

void clsZKDictionary::SetData(const Variant& Item, const Variant& vData) {
  ReplaceData(Item, vData);
}

Variant clsZKDictionary::Key(const Variant& Item) const {
  if (IsKey(Item)) return Item;
  const int64_t i = IndexIn(*entries_, Item);
  if (i < 0) return Variant();
  return Variant(entries_->at(static_cast<size_t>(i)).key);
}

void clsZKDictionary::LetKey(const Variant& Item, const Variant& NewKey) {
  try {
    const Variant item = Item;
    bool inserted;
    if (!IsKey(item)) {
      const int64_t i = IndexIn(*entries_, item);
      if (i < 0) return;
      Entry& e = entries_->at(static_cast<size_t>(i));
      Variant value = std::move(e.value);
      entries_->erase(e);
      // The entry is out before the new key is read: a key that cannot be text
      // loses it, like a key that is already taken.
      inserted = Insert(ToString(NewKey), std::move(value));
    } else {
      String new_key = ToString(NewKey);
      if (CompareStrings(item.asString(), new_key, compare_mode_) == 0) return;
      Entry* e = entries_->find(item.asString());
      if (!e) return;
      Variant value = std::move(e->value);
      entries_->erase(*e);
      inserted = Insert(std::move(new_key), std::move(value));
    }
    if (inserted) {
      changed_ = true;
      NotifyChanged(item);
    }
  } catch (const Error&) {
  }
}

Ref<Enumerator> clsZKDictionary::NewEnum() const {
  std::vector<Variant> values;
  values.reserve(entries_->size());
  entries_->forEach([&](const Entry& e) { values.push_back(e.value); });
  return New<Enumerator>(std::move(values));
}

xeTS_DICTIONARY_SORT clsZKDictionary::SortMode() const {
  return entries_->size() > 0 ? xcTS_DICT_SORT_NONE : sort_mode_;
}

bool clsZKDictionary::Exists(const Variant& KeyName) const {
  if (entries_->size() == 0) return false;
  if (IsKey(KeyName)) return entries_->find(KeyName.asString()) != nullptr;
  try {
    const int32_t position = ToLong(KeyName);
    return position >= 1 && static_cast<size_t>(position) <= entries_->size();
  } catch (const Error&) {
    return false;
  }
}

int clsZKDictionary::OnChanged(std::function<void(const Variant& ChangedItem)> listener) {
  return Connect([listener = std::move(listener)](StringView event, std::vector<Variant>& args) {
    if (event == u"OnChanged" && !args.empty()) listener(args[0]);
  });
}

namespace {

const EnumInfo kSortModes{u"xeTS_DICTIONARY_SORT",
                          {{u"xcTS_DICT_SORT_NONE", xcTS_DICT_SORT_NONE,
                            u"New entries go last: insertion order."},
                           {u"xcTS_DICT_SORT_ASC", xcTS_DICT_SORT_ASC,
                            u"New entries go to their place in ascending key order."},
                           {u"xcTS_DICT_SORT_DESC", xcTS_DICT_SORT_DESC,
                            u"New entries go to their place in descending key order."}},
                          u"Where clsZKDictionary puts new entries (its SortMode)."};

[[maybe_unused]] const bool sort_modes_registered = RegisterEnum(kSortModes);

}  // namespace

TSRUNTIME_DEFINE_CLASS(clsZKDictionary) {
  static const ClassInfo info =
      ClassBuilder<clsZKDictionary>("clsZKDictionary")
          .Help(u"An ordered key-value container: string keys looked up in any case, Variant "
                u"values, insertion or sorted order, the OnChanged event.")
          .Method("Add", &clsZKDictionary::Add, {"Key", Opt("vData")})
          .Help(u"Adds Key with vData unless Exists(Key) is True; a numeric Key is stored as its "
                u"text. Raises nothing and no event.")
          .Method("Clear", &clsZKDictionary::Clear)
          .Help(u"Removes every entry and sets Changed to False; SortMode and CompareMode stay.")
          .Get("Count", &clsZKDictionary::Count)
          .Help(u"The number of entries.")
          .Method("Remove", &clsZKDictionary::Remove, {"Item"})
          .Help(u"Removes the entry of the key or zero-based index Item, when there is one; "
                u"raises nothing.")
          .Let("Data", &clsZKDictionary::LetData, {"Item", "vData"})
          .Help(u"The value of the key or zero-based index Item, or Nothing; the default member. "
                u"Assigning moves the entry as if added again and raises OnChanged.")
          .Set("Data", &clsZKDictionary::SetData, {"Item", "vData"})
          .Get("Data", &clsZKDictionary::Data, {"Item"})
          .Let("Key", &clsZKDictionary::LetKey, {"Item", "NewKey"})
          .Help(u"The key at the zero-based index Item (a String Item comes back as given); "
                u"assigning renames the entry to NewKey and raises OnChanged.")
          .Get("Key", &clsZKDictionary::Key, {"Item"})
          .Method("NewEnum", &clsZKDictionary::NewEnum)
          .Help(u"An enumerator over the values in entry order, as they are now.")
          .Let("CompareMode", &clsZKDictionary::LetCompareMode, {"RHS"})
          .Help(u"The comparison of sorted insertion and of renaming: 0 binary, 1 text; lookups "
                u"ignore case whatever it says.")
          .Get("CompareMode", &clsZKDictionary::CompareMode)
          .Let("SortMode", &clsZKDictionary::LetSortMode,
               {Typed("RHS", VarType::kLong)})
          .Help(u"Where new entries go (xeTS_DICTIONARY_SORT); reads xcTS_DICT_SORT_NONE once the "
                u"dictionary holds entries.")
          .Get("SortMode", &clsZKDictionary::SortMode)
          .Get("Changed", &clsZKDictionary::Changed)
          .Help(u"True after any change since the last Clear.")
          .Method("Exists", &clsZKDictionary::Exists, {"KeyName"})
          .Help(u"Whether the key KeyName exists (any case), or, for a number, whether it is a "
                u"one-based position from 1 to Count.")
          .Default("Data")
          .Event("OnChanged", {"ChangedItem"})
          .Help(u"Raised by assigning Data or Key, with the Item the host passed.")
          .Build();
  return info;
}

}  // namespace tsruntime
