// clsZKStorage: the tree in a file, as the UTF-16 little-endian code units of the
// root's text with no byte-order mark.
#include "storage_text.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime {

bool clsZKStorage::Save(const String& FileFullName) const {
  return Quietly([&] {
    bool failed = false;
    const String text = ToString(failed);
    std::vector<uint8_t> bytes(text.size() * 2);
    for (size_t i = 0; i < text.size(); ++i) {
      bytes[2 * i] = static_cast<uint8_t>(text[i] & 0xFF);
      bytes[2 * i + 1] = static_cast<uint8_t>(text[i] >> 8);
    }
    // Whatever was built is written, even when the root's own step failed.
    const bool written =
        New<clsZKFileSystem>()->BinaryWrite(FileFullName, SafeArray::FromBytes(bytes));
    return written && !failed;
  });
}

bool clsZKStorage::Load(const String& FileFullName) {
  return Quietly([&] {
    SafeArray bytes(VarType::kByte);
    if (!New<clsZKFileSystem>()->BinaryRead(FileFullName, bytes)) return false;
    const std::vector<uint8_t>& b = bytes.bytes();
    String text(b.size() / 2, u'\0');
    for (size_t i = 0; i < text.size(); ++i) {
      text[i] = static_cast<char16_t>(b[2 * i] | b[2 * i + 1] << 8);
    }
    return ToObject(text);
  });
}

}  // namespace tsruntime
