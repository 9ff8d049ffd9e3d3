#include "tsruntime/clsZKRegistry.h"

#include "registry_store.h"
#include "utf16_bytes.h"
#include "tsruntime/automation/codepage.h"

namespace tsruntime {
namespace {

using namespace registry;

constexpr size_t kStringBufferBytes = 16384;

// Key paths and value names reach the store as the ANSI calls pass them on: through the
// code page and back to Unicode.
String AnsiName(const String& name) { return AnsiRoundTrip(name); }

// ANSI string data as the store keeps it: each byte becomes its Unicode character.
std::vector<uint8_t> StoredString(std::span<const uint8_t> ansi) {
  return Utf16LeBytes(AnsiToString(ansi));
}

// The bytes an ANSI query hands back: string types converted to the code page, the rest
// as stored.
std::vector<uint8_t> AnsiData(uint32_t type, const std::vector<uint8_t>& stored) {
  constexpr uint32_t kRegMultiSz = 7;
  if (type == kRegSz || type == kRegExpandSz || type == kRegMultiSz) {
    return StringToAnsi(FromUtf16LeBytes(stored));
  }
  return stored;
}

void SetFlag(bool* flag, bool value) {
  if (flag) *flag = value;
}

// A write that opens the key, or creates it when it will not open.
bool WriteValue(int32_t hKey, const String& strSubKey, const String& name, uint32_t type,
                std::span<const uint8_t> data) {
  return SetValue(hKey, AnsiName(strSubKey), AnsiName(name), type, data, true) == kSuccess;
}

}  // namespace

bool clsZKRegistry::CreateSubKey(int32_t hKey, const String& strSubKey) {
  const int32_t created = registry::CreateKey(hKey, AnsiName(strSubKey));
  // Closing the handle a failed create left empty fails too.
  const int32_t closed = created == kSuccess ? kSuccess : kInvalidHandle;
  return created + closed == 0;
}

bool clsZKRegistry::DeleteKey(int32_t hKey, const String& strSubKey, const String& strValueName) {
  if (!strValueName.empty()) {
    return DeleteValue(hKey, AnsiName(strSubKey), AnsiName(strValueName)) == kSuccess;
  }
  return registry::DeleteKey(hKey, AnsiName(strSubKey)) == kSuccess;
}

bool clsZKRegistry::SetString(int32_t hKey, const String& strSubKey, const String& strValueName,
                              const String& strValue) {
  std::vector<uint8_t> ansi;
  if (strValueName.empty()) {
    // The default-value call measures the text itself, up to its first zero.
    ansi = StringToAnsi(StringView(strValue).substr(0, strValue.find(u'\0')));
    ansi.push_back(0);
  } else {
    // The length passed leaves the terminator out; the platform adds one when the data
    // does not already end in a zero.
    ansi = StringToAnsi(strValue);
    if (!ansi.empty() && ansi.back() != 0) ansi.push_back(0);
  }
  return WriteValue(hKey, strSubKey, strValueName, kRegSz, StoredString(ansi));
}

String clsZKRegistry::GetString(int32_t hKey, const String& strSubKey, const String& strValueName,
                                const String& strDefault, bool* blnError) {
  SetFlag(blnError, true);
  uint32_t type = kRegSz;
  std::vector<uint8_t> stored;
  Status status = QueryValue(hKey, AnsiName(strSubKey), AnsiName(strValueName), &type, &stored);
  if (strValueName.empty()) {
    // The default-value query reports no type, and a key without a default value as an
    // empty string.
    if (status == kFileNotFound && OpenKey(hKey, AnsiName(strSubKey)) == kSuccess) {
      status = kSuccess;
      stored = {0, 0};
    }
  }
  const std::vector<uint8_t> ansi = AnsiData(type, stored);
  if (strValueName.empty()) type = kRegSz;
  if (status != kSuccess || ansi.size() > kStringBufferBytes) return strDefault;
  if (ansi.empty() || type != kRegSz) return strDefault;
  SetFlag(blnError, false);
  return AnsiToString(std::span(ansi).first(ansi.size() - 1));
}

bool clsZKRegistry::SetLong(int32_t hKey, const String& strSubKey, const String& strValueName,
                            int32_t lngValue) {
  const auto u = static_cast<uint32_t>(lngValue);
  const uint8_t bytes[4] = {static_cast<uint8_t>(u), static_cast<uint8_t>(u >> 8),
                            static_cast<uint8_t>(u >> 16), static_cast<uint8_t>(u >> 24)};
  return WriteValue(hKey, strSubKey, strValueName, kRegDword, bytes);
}

int32_t clsZKRegistry::GetLong(int32_t hKey, const String& strSubKey, const String& strValueName,
                               int32_t lngDefault, bool* blnError) {
  SetFlag(blnError, true);
  uint32_t type = kRegDword;
  std::vector<uint8_t> data;
  if (QueryValue(hKey, AnsiName(strSubKey), AnsiName(strValueName), &type, &data) != kSuccess ||
      type != kRegDword || data.size() != 4) {
    return lngDefault;
  }
  SetFlag(blnError, false);
  return static_cast<int32_t>(data[0] | (data[1] << 8) | (data[2] << 16) |
                              (static_cast<uint32_t>(data[3]) << 24));
}

bool clsZKRegistry::SetBinary(int32_t hKey, const String& strSubKey, const String& strValueName,
                              const SafeArray& abytValue) {
  abytValue.RequireElementType(VarType::kByte);
  return WriteValue(hKey, strSubKey, strValueName, kRegBinary, abytValue.bytes());
}

SafeArray clsZKRegistry::GetBinary(int32_t hKey, const String& strSubKey,
                                   const String& strValueName, bool* blnError) {
  SetFlag(blnError, true);
  uint32_t type = kRegNone;
  std::vector<uint8_t> data;
  if (QueryValue(hKey, AnsiName(strSubKey), AnsiName(strValueName), &type, &data) != kSuccess ||
      type != kRegBinary || data.empty()) {
    return SafeArray(VarType::kByte);
  }
  SetFlag(blnError, false);
  return SafeArray::FromBytes(data);
}

TSRUNTIME_DEFINE_CLASS(clsZKRegistry) {
  static const ClassInfo info =
      ClassBuilder<clsZKRegistry>("clsZKRegistry")
          .Help(u"Registry keys and their string, Long and binary values, one call each; raises "
                u"nothing: setters return False, getters their default.")
          .Method("CreateSubKey", &clsZKRegistry::CreateSubKey, {"hKey", "strSubKey"})
          .Help(u"Creates the key strSubKey under the root hKey (xeREGISTRY_HKEY) with every "
                u"missing level, or opens it; True on success.")
          .Method("DeleteKey", &clsZKRegistry::DeleteKey,
                  {"hKey", "strSubKey", Opt("strValueName", String())})
          .Help(u"Deletes the value strValueName of the key, or without a name the key itself "
                u"when it has no subkeys; False when missing.")
          .Method("SetString", &clsZKRegistry::SetString,
                  {"hKey", "strSubKey", Opt("strValueName", String()), Opt("strValue", String())})
          .Help(u"Writes the string strValue as the value strValueName (the default value when "
                u"empty), creating the key when missing.")
          .Method("GetString", &clsZKRegistry::GetString,
                  {"hKey", "strSubKey", Opt("strValueName", String()), Opt("strDefault", String()),
                   Opt("blnError")})
          .Help(u"The string value strValueName of the key, or strDefault with blnError True when "
                u"it is missing or of another type.")
          .Method("SetLong", &clsZKRegistry::SetLong,
                  {"hKey", "strSubKey", "strValueName", "lngValue"})
          .Help(u"Writes the 32-bit integer lngValue as the value strValueName, creating the key "
                u"when missing.")
          .Method(
              "GetLong", &clsZKRegistry::GetLong,
              {"hKey", "strSubKey", "strValueName", Opt("lngDefault", int32_t{0}), Opt("blnError")})
          .Help(u"The 32-bit integer value strValueName of the key, or lngDefault with blnError "
                u"True when it is missing or of another type.")
          .Method(
              "SetBinary", &clsZKRegistry::SetBinary,
              {"hKey", "strSubKey", "strValueName", Typed("abytValue", ArrayOf(VarType::kByte))})
          .Help(u"Writes the bytes of abytValue as the binary value strValueName, creating the "
                u"key when missing.")
          .Method("GetBinary", &clsZKRegistry::GetBinary,
                  {"hKey", "strSubKey", "strValueName", Opt("blnError")})
          .Returns(ArrayOf(VarType::kByte))
          .Help(u"The binary value strValueName as a byte array from 0, or a never-dimensioned "
                u"one with blnError True when it is missing.")
          .Build();
  return info;
}

namespace {
const EnumInfo kRegistryRoots{u"xeREGISTRY_HKEY",
                              {{u"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT,
                                u"Class registrations, in the machine-wide store."},
                               {u"HKEY_CURRENT_USER", HKEY_CURRENT_USER,
                                u"The settings of the user running the program."},
                               {u"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE,
                                u"Machine-wide settings, which only root may change."},
                               {u"HKEY_USERS", HKEY_USERS,
                                u"Every user's settings, in the machine-wide store."},
                               {u"HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA,
                                u"Not a key here: every operation on it fails."},
                               {u"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG,
                                u"The current hardware profile, in the machine-wide store."},
                               {u"HKEY_DYN_DATA", HKEY_DYN_DATA,
                                u"Not a key here: every operation on it fails."}},
                              u"The registry's root keys, the hKey of clsZKRegistry."};
[[maybe_unused]] const bool registered = RegisterEnum(kRegistryRoots);
}  // namespace

}  // namespace tsruntime
