// Where the registry store keeps its databases, and who may write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tsruntime::registry {

// The environment variable that moves the whole store into one folder.
inline constexpr const char* kStoreDirVariable = "TSRUNTIME_REGISTRY_DIR";

struct DatabaseFile {
  std::string path;
  bool machine_wide = false;  // written only by root, readable by all
};

// The database that holds `root`, or nothing for a handle that is not a store root.
// Read from the environment on every call, so a host (or a test) may move the store.
std::optional<DatabaseFile> DatabaseFor(int32_t root);

// Whether this process may change the database: machine-wide data only as root.
bool MayWrite(const DatabaseFile& file);

// Makes each missing folder level above `file` (0700 per-user, 0755 machine-wide) and the
// empty file itself (0600 per-user, 0644 machine-wide), with those modes whatever the
// umask; what exists is left as it is. False on failure.
bool PrepareFile(const DatabaseFile& file);

}  // namespace tsruntime::registry
