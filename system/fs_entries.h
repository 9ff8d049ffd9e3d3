// Listing, renaming and removing entries, shared by the file, folder and scan operations.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "fs_paths.h"

namespace tsruntime::fs_detail {

inline constexpr char kClassName[] = "clsZKFileSystem";

// What a listed entry is; a link is told by what it names (a dangling one is a file).
enum class EntryKind { kFile, kFolder, kLinkToFolder };

inline EntryKind KindOf(int dir_fd, const dirent& e) {
  struct stat info;
  switch (e.d_type) {
    case DT_DIR:
      return EntryKind::kFolder;
    case DT_LNK:
      return ::fstatat(dir_fd, e.d_name, &info, 0) == 0 && S_ISDIR(info.st_mode)
                 ? EntryKind::kLinkToFolder
                 : EntryKind::kFile;
    case DT_UNKNOWN:
      if (::fstatat(dir_fd, e.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return EntryKind::kFile;
      if (S_ISDIR(info.st_mode)) return EntryKind::kFolder;
      if (!S_ISLNK(info.st_mode)) return EntryKind::kFile;
      return ::fstatat(dir_fd, e.d_name, &info, 0) == 0 && S_ISDIR(info.st_mode)
                 ? EntryKind::kLinkToFolder
                 : EntryKind::kFile;
    default:
      return EntryKind::kFile;
  }
}

// Opens the folder `name` under the open folder `at` (AT_FDCWD for a path) for listing;
// a link is opened only when `follow` is set. Raises the runtime's error for `shown`.
inline int OpenFolder(int at, const std::string& name, const std::string& shown, bool follow) {
  const int fd = ::openat(at, name.c_str(),
                          O_RDONLY | O_DIRECTORY | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW));
  if (fd < 0) RaiseErrno(errno, shown, Missing::kPath);
  return fd;
}

// Calls `visit(dir_fd, name, kind)` for each entry of the open folder `fd` but "." and
// "..", in the file system's listing order; takes ownership of `fd`. Raises the
// runtime's error when the listing fails.
template <class F>
void ForEachEntry(int fd, const std::string& shown, F&& visit) {
  DIR* dir = ::fdopendir(fd);
  if (!dir) {
    const int error = errno;
    ::close(fd);
    RaiseErrno(error, shown, Missing::kPath);
  }
  struct Closer {
    DIR* dir;
    ~Closer() { ::closedir(dir); }
  } closer{dir};
  for (;;) {
    errno = 0;
    const dirent* e = ::readdir(dir);
    if (!e) {
      if (errno != 0) RaiseErrno(errno, shown, Missing::kPath);
      return;
    }
    const std::string_view name(e->d_name);
    if (name == "." || name == "..") continue;
    visit(::dirfd(dir), name, KindOf(::dirfd(dir), *e));
  }
}

// Renames `path` within its folder to `new_name`, refusing a name that is taken: 58.
// A new name that is empty, "." or "..", or holds "/", is a bad file name (52); the
// same name is no change and no failure.
void RenameInFolder(const std::string& path, StringView new_name);

// Removes the folder `path` (absolute, "." and ".." resolved) with everything in it,
// without following links. Raises permission denied (70) before anything is removed
// when the removal could not go through: a read-only entry without `force`, a folder
// whose entries may not be removed, a file system mounted inside, a folder that holds
// the process's current folder, or a parent that does not let it go. With `force`,
// this user's own folders are given the permissions removal takes.
void RemoveTree(const std::string& path, bool force);

}  // namespace tsruntime::fs_detail
