#include "file_stamp.h"

#include "fs_paths.h"

namespace tsruntime::system_detail {

// Found as FileDateTime finds the entry, but kept to the nanosecond: a file rewritten
// within the same second must still read as changed.
std::optional<FileTime> FileModificationTime(StringView path) {
  if (path.empty() || path.find(u'\0') != StringView::npos) return std::nullopt;
  struct stat info {};
  if (!fs_detail::StatEntry(fs_detail::NativePath(path), info)) return std::nullopt;
  return FileTime{static_cast<int64_t>(info.st_mtim.tv_sec),
                  static_cast<int64_t>(info.st_mtim.tv_nsec)};
}

}  // namespace tsruntime::system_detail
