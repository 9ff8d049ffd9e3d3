// clsZKRegistry: registry keys and string, 32-bit integer and binary values, one call each.
//
//   auto reg = tsruntime::New<tsruntime::clsZKRegistry>();
//   reg->SetString(HKEY_CURRENT_USER, u"Software\\Acme", u"Path", u"/opt/acme");  // True
//   reg->GetString(HKEY_CURRENT_USER, u"Software\\Acme", u"Path");  // "/opt/acme"
//
// Every operation opens the key it needs, acts and closes it again; the object keeps no
// state. Nothing is raised: setters return False when the key can be neither opened nor
// created or the value cannot be written, getters return their default and set
// `blnError` to True (False on success). A value of another type is a failure for every
// getter.
//
// Key paths have "\" between levels and are compared without regard to case (Cyrillic
// included); a key keeps the spelling it was created with. Key paths, value names and
// string values pass through the ANSI code page (1251 by default) on the way in and out:
// characters it lacks become "?". A path may not start with "\" or hold an empty level;
// one trailing "\" is ignored. An empty path is the root key itself.
//
// Linux has no registry: the store behind this class is a SQLite database per user and
// one for the machine. HKEY_CURRENT_USER lives in $XDG_CONFIG_HOME/tsruntime/registry.db
// (~/.config/... when unset, mode 0600); the other roots in /var/lib/tsruntime/registry.db,
// which only root may change: writes there by other users fail as access denied, and the
// operation returns False. HKEY_PERFORMANCE_DATA, HKEY_DYN_DATA and other handles are not
// keys: every operation on them fails. TSRUNTIME_REGISTRY_DIR moves the whole store into
// one folder (user.db, machine.db). `tsrt reg export` and `tsrt reg import` move keys to
// and from the registry's text export format (registry_file.h).
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/safearray.h"

namespace tsruntime {

// The predefined root keys, with the platform's handle values.
enum xeREGISTRY_HKEY : int32_t {
  HKEY_CLASSES_ROOT = static_cast<int32_t>(0x80000000),
  HKEY_CURRENT_USER = static_cast<int32_t>(0x80000001),
  HKEY_LOCAL_MACHINE = static_cast<int32_t>(0x80000002),
  HKEY_USERS = static_cast<int32_t>(0x80000003),
  HKEY_PERFORMANCE_DATA = static_cast<int32_t>(0x80000004),
  HKEY_CURRENT_CONFIG = static_cast<int32_t>(0x80000005),
  HKEY_DYN_DATA = static_cast<int32_t>(0x80000006),
};

class clsZKRegistry : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // Creates the key (every missing level), or opens it when it exists. True when the
  // create and the close together report success: their two statuses are summed and the
  // sum tested, rather than each status.
  bool CreateSubKey(int32_t hKey, const String& strSubKey);

  // With a value name: deletes only that value, and the key stays; False when the key or
  // the value is missing. Without one: deletes the key with its values; False when it is
  // missing or has subkeys (nothing is deleted recursively), and for a root key.
  bool DeleteKey(int32_t hKey, const String& strSubKey, const String& strValueName = {});

  // Writes a string value, creating the key first when it is missing. An empty
  // `strValueName` sets the key's default value.
  //   - A named value stores the text and a terminating zero, which is added only when
  //     the text does not already end in one: "ab" & Chr(0) is stored as "ab", and an
  //     empty text is stored with no bytes at all (`GetString` then reports a failure).
  //   - The default value stores the text up to its first zero character, and a zero.
  bool SetString(int32_t hKey, const String& strSubKey, const String& strValueName = {},
                 const String& strValue = {});

  // Reads a string value (type 1). The data must fit 16,384 bytes, its terminating zero
  // included: the result is the data without its last character. Anything else (a
  // missing key or value, another type, a longer value, a value stored with no bytes)
  // yields `strDefault` with `blnError` True.
  //   The default value (empty `strValueName`) is read without looking at its type: a
  //   number or binary default value reads as its bytes. A key that has no default value
  //   reads as "" with `blnError` False, as the platform's default-value query reports it.
  String GetString(int32_t hKey, const String& strSubKey, const String& strValueName = {},
                   const String& strDefault = {}, bool* blnError = nullptr);

  // Writes a 32-bit integer value (type 4), creating the key first when it is missing.
  bool SetLong(int32_t hKey, const String& strSubKey, const String& strValueName, int32_t lngValue);

  // Reads a value of type 4 and exactly 4 bytes; otherwise `lngDefault`, `blnError` True.
  int32_t GetLong(int32_t hKey, const String& strSubKey, const String& strValueName,
                  int32_t lngDefault = 0, bool* blnError = nullptr);

  // Writes the bytes of `abytValue` as a binary value (type 3), creating the key first
  // when it is missing. An array with no elements (never dimensioned, or 0 to -1) writes
  // a value of no bytes. An array of another element type is a type mismatch (13), which
  // the call itself raises before anything is written.
  bool SetBinary(int32_t hKey, const String& strSubKey, const String& strValueName,
                 const SafeArray& abytValue);

  // Reads a binary value (type 3) as a byte array with bounds 0 to size - 1 and
  // `blnError` False. A missing key or value, another type, and a binary value of no
  // bytes give a never-dimensioned byte array with `blnError` True.
  SafeArray GetBinary(int32_t hKey, const String& strSubKey, const String& strValueName,
                      bool* blnError = nullptr);
};

}  // namespace tsruntime
