// The item level of the storage text: one record per value.
#include "../text/packed_fields.h"
#include "storage_text.h"
#include "tsruntime/automation/checked.h"

namespace tsruntime {

using packed::kChunkHeader;

size_t StorageText::ItemsLength(const clsZKStorageItems& items) {
  return static_cast<size_t>(CheckedLong(static_cast<int64_t>(items.texts_.size()) +
                                         static_cast<int64_t>(items.slots_.size() * kRecordHeader)));
}

void StorageText::AppendItems(String& out, const clsZKStorageItems& items) {
  const size_t count = items.slots_.size();
  size_t p = out.size();
  out.resize(p + ItemsLength(items));
  for (size_t i = 0; i < count; ++i) {
    const StringView text = items.TextAt(i);
    packed::WriteField(&out[p], static_cast<int64_t>(text.size() + kRecordHeader), kChunkHeader);
    packed::WriteField(&out[p + kChunkHeader], items.slots_[i].type, kTypeField);
    text.copy(&out[p + kRecordHeader], text.size());
    p += text.size() + kRecordHeader;
  }
}

bool StorageText::ReadItems(clsZKStorageItems& items, StringView text) {
  return Quietly([&] {
    const int64_t length = static_cast<int64_t>(text.size());
    int64_t p = 1;
    while (p < length) {
      // The slot comes first: a record that fails to read leaves it behind, typeless.
      items.slots_.push_back({items.texts_.size(), 0});
      clsZKStorageItems::Slot& slot = items.slots_.back();
      const size_t at = static_cast<size_t>(p - 1);
      const int64_t record = packed::ReadField(text, at, kChunkHeader);
      if (record < static_cast<int64_t>(kRecordHeader)) return false;
      slot.type = static_cast<int32_t>(packed::ReadField(text, at + kChunkHeader, kTypeField));
      if (at + kRecordHeader < text.size()) {
        items.texts_ +=
            text.substr(at + kRecordHeader, static_cast<size_t>(record) - kRecordHeader);
        slot.end = items.texts_.size();
      }
      p = CheckedLong(p + record);
    }
    return true;
  });
}

String clsZKStorageItems::ToString(bool& ErrFlag) const {
  ErrFlag = true;
  String out;
  if (slots_.empty()) {
    ErrFlag = false;
    return out;
  }
  if (!Quietly([&] {
        StorageText::AppendItems(out, *this);
        return true;
      })) {
    return String();
  }
  ErrFlag = false;
  return out;
}

bool clsZKStorageItems::ToObject(const String& strData) {
  Clear();
  return strData.empty() || StorageText::ReadItems(*this, strData);
}

}  // namespace tsruntime
