// A file's modification time to the nanosecond, for callers that must notice a
// rewrite within the same second. Internal to the library.
#pragma once

#include <cstdint>
#include <optional>

#include "tsruntime/automation/string.h"

namespace tsruntime::system_detail {

struct FileTime {
  int64_t seconds = 0;      // since 1970-01-01 00:00:00 UTC
  int64_t nanoseconds = 0;  // 0 .. 999999999
  bool operator==(const FileTime&) const = default;
};

// The modification time of the file or folder at `path` (links followed), or nothing
// when it cannot be read (no such path, an empty path, no permission on the way).
std::optional<FileTime> FileModificationTime(StringView path);

}  // namespace tsruntime::system_detail
