// The registry store: the registry's model on SQLite, for a platform that has none.
//
// The model is the one registry callers rely on: predefined roots; keys below them named
// by paths with "\" between levels, looked up without regard to case (Cyrillic included)
// and kept as first written; in each key named values, each with a type number and its
// data, the empty name being the key's default value. Text is Unicode here, as in the
// registry itself: string data is UTF-16LE with its terminating zero. The ANSI view that
// `clsZKRegistry` offers is built on top.
//
// Each call is one transaction on one database, so several processes may use the store
// at once and a process killed inside a call leaves the store as before or as after.
// Calls return the platform's status numbers (0 success), never raise.
//
// Where the data lives (see registry_location.cpp):
//   - HKEY_CURRENT_USER: $XDG_CONFIG_HOME/tsruntime/registry.db (~/.config/... when unset),
//     mode 0600;
//   - HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT, HKEY_USERS, HKEY_CURRENT_CONFIG:
//     /var/lib/tsruntime/registry.db, written only by root; other users may read;
//   - with TSRUNTIME_REGISTRY_DIR set, both move there as user.db and machine.db.
// HKEY_PERFORMANCE_DATA, HKEY_DYN_DATA and every other handle are not keys of the store:
// calls with them fail with `kInvalidHandle`.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime::registry {

// The platform's numbers, so that results read as they would there.
enum Status : int32_t {
  kSuccess = 0,
  kFileNotFound = 2,   // no such key or value
  kAccessDenied = 5,   // machine-wide write by a non-root user; a key with subkeys
  kInvalidHandle = 6,  // not a root of the store
  kInvalidParameter = 87,
  kBusy = 170,         // the database stayed locked past the busy timeout
  kBadPathname = 161,  // a path that starts with "\" or has an empty level
  kMoreData = 234,
  kStoreFailed = 1009,  // the database could not be opened or read (corrupt, I/O)
};

enum ValueType : uint32_t {
  kRegNone = 0,
  kRegSz = 1,
  kRegExpandSz = 2,
  kRegBinary = 3,
  kRegDword = 4,
};

struct Value {
  String name;  // as first written; empty for the default value
  uint32_t type = kRegNone;
  std::vector<uint8_t> data;
  bool deleted = false;  // in an import: the value is to be deleted (type and data unused)
};

// One key with its values in the order they were first written.
struct Key {
  int32_t root = 0;
  String path;  // below the root, levels as first written, "" for the root itself
  std::vector<Value> values;
  bool deleted = false;  // in an import: the key and everything below it are to go
};

// The root's name ("HKEY_CURRENT_USER"), or "" for a handle that is not a root.
String RootName(int32_t root);
// The root named `name` (long form or HKCU, HKLM, HKCR, HKU, HKCC), or 0.
int32_t RootNamed(StringView name);

// Opens the key: kSuccess when it exists (the root itself for an empty path).
Status OpenKey(int32_t root, StringView path);
// Creates the key and every missing level above it; an existing key is opened.
Status CreateKey(int32_t root, StringView path);
// Deletes a key that has no subkeys, with its values.
Status DeleteKey(int32_t root, StringView path);
Status DeleteValue(int32_t root, StringView path, StringView name);
// Writes a value, replacing its type and data but keeping the name as first written.
// With `create_key` a missing key is created first, in the same transaction.
Status SetValue(int32_t root, StringView path, StringView name, uint32_t type,
                std::span<const uint8_t> data, bool create_key);
Status QueryValue(int32_t root, StringView path, StringView name, uint32_t* type,
                  std::vector<uint8_t>* data);

// The key and all keys below it, parents before children, children in the order of
// their names compared without regard to case.
Status ReadTree(int32_t root, StringView path, std::vector<Key>* keys);
// kSuccess for a path the store takes; kBadPathname or kInvalidParameter as a call with
// it would fail.
Status CheckPath(StringView path);

// Applies the keys in their order: a deleted key goes with everything below it (a key
// that is not there is no error, a root is never deleted); any other key is created and
// its values are written or deleted in their order. Nothing is written unless every key
// has a root of the store, a path the store takes and a database this process may
// write; every database involved is then locked before any is written, and all commit
// together.
Status WriteKeys(const std::vector<Key>& keys);

}  // namespace tsruntime::registry
