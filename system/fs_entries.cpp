#include "fs_entries.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tsruntime::fs_detail {
namespace {

struct DirCloser {
  DIR* dir;
  ~DirCloser() {
    if (dir) ::closedir(dir);
  }
};

// Calls `visit(name, is_folder)` for each entry of the open folder `fd` but "." and "..";
// takes ownership of `fd`.
template <class F>
void ForEachEntry(int fd, const std::string& shown_path, F&& visit) {
  DIR* dir = ::fdopendir(fd);
  if (!dir) {
    const int error = errno;
    ::close(fd);
    RaiseErrno(error, shown_path, Missing::kPath);
  }
  const DirCloser closer{dir};
  for (;;) {
    errno = 0;
    const dirent* e = ::readdir(dir);
    if (!e) {
      if (errno != 0) RaiseErrno(errno, shown_path, Missing::kPath);
      return;
    }
    const std::string_view name(e->d_name);
    if (name == "." || name == "..") continue;
    bool folder = e->d_type == DT_DIR;
    if (e->d_type == DT_UNKNOWN) {
      struct stat info;
      folder = ::fstatat(::dirfd(dir), e->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISDIR(info.st_mode);
    }
    visit(::dirfd(dir), std::string(name), folder);
  }
}

int OpenFolder(int at, const std::string& name, const std::string& shown_path) {
  const int fd = ::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) RaiseErrno(errno, shown_path, Missing::kPath);
  return fd;
}

bool HoldsReadOnly(int at, const std::string& name, const std::string& shown_path) {
  struct stat info;
  if (::fstatat(at, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
    RaiseErrno(errno, shown_path, Missing::kPath);
  }
  // A link has no permissions of its own.
  if (!S_ISLNK(info.st_mode) && IsReadOnly(info)) return true;
  if (!S_ISDIR(info.st_mode)) return false;
  bool found = false;
  ForEachEntry(OpenFolder(at, name, shown_path), shown_path,
               [&](int fd, const std::string& entry, bool) {
                 found = found || HoldsReadOnly(fd, entry, shown_path + "/" + entry);
               });
  return found;
}

void RemoveContent(int at, const std::string& name, const std::string& shown_path) {
  // Forced removal takes a read-only folder too, which the kernel would refuse to empty
  // for anyone but root.
  struct stat info;
  if (::fstatat(at, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && IsReadOnly(info)) {
    ::fchmodat(at, name.c_str(), (info.st_mode & 07777) | S_IWUSR, 0);
  }
  ForEachEntry(OpenFolder(at, name, shown_path), shown_path,
               [&](int fd, const std::string& entry, bool folder) {
                 const std::string shown = shown_path + "/" + entry;
                 if (folder) RemoveContent(fd, entry, shown);
                 if (::unlinkat(fd, entry.c_str(), folder ? AT_REMOVEDIR : 0) != 0) {
                   RaiseErrno(errno, shown, Missing::kPath);
                 }
               });
}

}  // namespace

void RenameInFolder(const std::string& path, StringView new_name) {
  if (new_name.empty() || new_name == u"." || new_name == u".." ||
      new_name.find(kSeparator) != StringView::npos) {
    RaiseRuntime(RuntimeError::kBadFileNameOrNumber);
  }
  const size_t slash = path.rfind('/');
  const std::string name = NativePath(new_name);
  const std::string target = slash == std::string::npos ? name : path.substr(0, slash + 1) + name;
  if (target == path) return;
  if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
    return;
  }
  if (errno != EINVAL) RaiseErrno(errno, path, Missing::kPath);
  // A file system without the no-replace rename.
  struct stat info;
  if (::lstat(target.c_str(), &info) == 0) RaiseRuntime(RuntimeError::kFileAlreadyExists);
  if (::rename(path.c_str(), target.c_str()) != 0) RaiseErrno(errno, path, Missing::kPath);
}

void RemoveTree(const std::string& path, bool force) {
  if (!force && HoldsReadOnly(AT_FDCWD, path, path)) {
    RaiseRuntime(RuntimeError::kPermissionDenied);
  }
  RemoveContent(AT_FDCWD, path, path);
  if (::rmdir(path.c_str()) != 0) RaiseErrno(errno, path, Missing::kPath);
}

}  // namespace tsruntime::fs_detail
