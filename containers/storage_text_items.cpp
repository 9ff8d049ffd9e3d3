// The item level of the storage text: one record per value.
#include "../text/packed_fields.h"
#include "storage_text.h"
#include "tsruntime/automation/checked.h"

namespace tsruntime {

using packed::kChunkHeader;

void StorageText::AppendItems(String& out, const clsZKStorageItems& items) {
  int64_t total = 0;
  for (const String& text : items.texts_) {
    total = CheckedLong(total + static_cast<int64_t>(text.size() + kRecordHeader));
  }
  size_t p = out.size();
  out.resize(p + static_cast<size_t>(total));
  for (size_t i = 0; i < items.texts_.size(); ++i) {
    const String& text = items.texts_[i];
    packed::WriteField(&out[p], static_cast<int64_t>(text.size() + kRecordHeader), kChunkHeader);
    packed::WriteField(&out[p + kChunkHeader], items.types_[i], kTypeField);
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
      items.types_.push_back(0);
      items.texts_.emplace_back();
      const size_t at = static_cast<size_t>(p - 1);
      const int64_t record = packed::ReadField(text, at, kChunkHeader);
      if (record < static_cast<int64_t>(kRecordHeader)) return false;
      items.types_.back() =
          static_cast<int32_t>(packed::ReadField(text, at + kChunkHeader, kTypeField));
      if (at + kRecordHeader < text.size()) {
        items.texts_.back() =
            text.substr(at + kRecordHeader, static_cast<size_t>(record) - kRecordHeader);
      }
      p = CheckedLong(p + record);
    }
    return true;
  });
}

String clsZKStorageItems::ToString(bool& ErrFlag) const {
  ErrFlag = true;
  String out;
  if (texts_.empty()) {
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
