// Whole-file content: bytes and ANSI text.
#include <climits>
#include <new>

#include "file_content.h"
#include "fs_paths.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime {

using namespace fs_detail;

bool clsZKFileSystem::BinaryRead(const String& FileFullName, SafeArray& DataArrayBuf) {
  DataArrayBuf.RequireElementType(VarType::kByte);
  if (FileFullName.find(u'\0') != String::npos) return false;
  WholeFileReader file(ToUtf8(FileFullName));
  // No array has bounds 0 to -1, and none reaches 2^31 elements.
  if (!file.ok() || file.size() == 0 || file.size() > INT32_MAX) return false;
  try {
    std::vector<uint8_t> bytes;
    if (!file.ReadAll(bytes)) return false;
    // The bytes go in as they are: bounds given to storage that already holds them
    // fill nothing.
    SafeArray content(VarType::kByte);
    content.bytes() = std::move(bytes);
    content.RedimPreserve(static_cast<int32_t>(file.size() - 1));
    DataArrayBuf = std::move(content);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool clsZKFileSystem::BinaryWrite(const String& FileFullName, const SafeArray& DataArray) {
  DataArray.RequireElementType(VarType::kByte);
  if (FileFullName.find(u'\0') != String::npos) return false;
  return ReplaceFileContent(ToUtf8(FileFullName), DataArray.bytes(), ReadOnlyTarget::kReplace);
}

bool clsZKFileSystem::StringRead(String& DataBuf, const String& FileFullName) {
  if (FileFullName.find(u'\0') != String::npos) return false;
  WholeFileReader file(ToUtf8(FileFullName));
  // A string holds fewer than 2^31 characters.
  if (!file.ok() || file.size() > INT32_MAX) return false;
  try {
    std::vector<uint8_t> bytes;
    if (!file.ReadAll(bytes)) return false;
    DataBuf = AnsiToString(bytes);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

String clsZKFileSystem::StringReadAsString(const Variant& FileFullName) {
  String name, content;
  try {
    name = ToString(FileFullName);
  } catch (const Error&) {
    return {};
  }
  return StringRead(content, name) ? content : String();
}

bool clsZKFileSystem::StringWrite(const String& DataString, const String& FileFullName,
                                  xeZK_FILEWRITEMODES WriteMode) {
  if (FileFullName.find(u'\0') != String::npos) return false;
  if ((WriteMode & xcZK_FILEWRITE_IFEXISTS) && !IsFileExists(FileFullName)) return true;
  const std::string path = ToUtf8(FileFullName);
  const std::vector<uint8_t> bytes = StringToAnsi(DataString);
  if (WriteMode & xcZK_FILEWRITE_REPLACE) {
    return ReplaceFileContent(path, bytes, ReadOnlyTarget::kRefuse);
  }
  if (WriteMode & xcZK_FILEWRITE_APPEND) return AppendFileContent(path, bytes);
  return false;
}

}  // namespace tsruntime
