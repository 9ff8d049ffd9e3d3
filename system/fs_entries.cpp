#include "fs_entries.h"

#include <cstdio>
#include <utility>

#include "file_descriptor.h"

namespace tsruntime::fs_detail {
namespace {

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether the entries of the folder `name` under `at` may be listed and removed. Forced
// removal gives this user's own folders the permissions that takes.
bool MayEmpty(int at, const std::string& name, const struct stat& info, bool force) {
  const int flags = AT_EACCESS | AT_SYMLINK_NOFOLLOW;
  if (::faccessat(at, name.c_str(), R_OK | W_OK | X_OK, flags) == 0) return true;
  return force && errno == EACCES && info.st_uid == ::geteuid() &&
         ::fchmodat(at, name.c_str(), (info.st_mode & 07777) | S_IRWXU, 0) == 0;
}

// Whether the entry `entry` may be removed from a folder described by `folder`: in a
// folder with the sticky bit only its owner, the folder's owner or root may.
bool MayUnlinkFrom(const struct stat& folder, const struct stat& entry) {
  const uid_t me = ::geteuid();
  return !(folder.st_mode & S_ISVTX) || me == 0 || entry.st_uid == me || folder.st_uid == me;
}

// Raises what removing the folder `name` under `at` with all it holds would meet part
// way, before anything is removed: a read-only entry without `force`, a folder whose
// entries this process may not remove, or another file system mounted inside (all 70).
void CheckRemovable(int at, const std::string& name, const std::string& shown_path,
                    const struct stat& info, bool force) {
  if (!MayEmpty(at, name, info, force)) RaiseRuntime(RuntimeError::kPermissionDenied);
  ForEachEntry(OpenFolder(at, name, shown_path, false), shown_path,
               [&](int fd, std::string_view entry_name, EntryKind) {
                 const std::string entry(entry_name), shown = shown_path + "/" + entry;
                 struct stat e;
                 if (::fstatat(fd, entry.c_str(), &e, AT_SYMLINK_NOFOLLOW) != 0) {
                   RaiseErrno(errno, shown, Missing::kPath);
                 }
                 // A link has no permissions of its own.
                 const bool refused = (!force && !S_ISLNK(e.st_mode) && IsReadOnly(e)) ||
                                      !MayUnlinkFrom(info, e) ||
                                      (S_ISDIR(e.st_mode) && e.st_dev != info.st_dev);
                 if (refused) RaiseRuntime(RuntimeError::kPermissionDenied);
                 if (S_ISDIR(e.st_mode)) CheckRemovable(fd, entry, shown, e, force);
               });
}

void RemoveContent(int at, const std::string& name, const std::string& shown_path) {
  ForEachEntry(OpenFolder(at, name, shown_path, false), shown_path,
               [&](int fd, std::string_view entry_name, EntryKind kind) {
                 const std::string entry(entry_name), shown = shown_path + "/" + entry;
                 const bool folder = kind == EntryKind::kFolder;
                 if (folder) RemoveContent(fd, entry, shown);
                 if (::unlinkat(fd, entry.c_str(), folder ? AT_REMOVEDIR : 0) != 0) {
                   RaiseErrno(errno, shown, Missing::kPath);
                 }
               });
}

// Whether the process's current folder is `folder` or lies inside it.
bool HoldsCurrentFolder(const struct stat& folder) {
  Fd at(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  for (struct stat here; at.fd >= 0 && ::fstat(at.fd, &here) == 0;) {
    if (SameFile(here, folder)) return true;
    Fd up(::openat(at.fd, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat parent;
    if (up.fd < 0 || ::fstat(up.fd, &parent) != 0 || SameFile(parent, here)) return false;
    std::swap(at.fd, up.fd);
  }
  return false;
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
  struct stat info, parent;
  if (::lstat(path.c_str(), &info) != 0) RaiseErrno(errno, path, Missing::kPath);
  const std::string folder = FolderOf(path);
  // A folder in use as the current one cannot go, and the parent must let it go.
  if (HoldsCurrentFolder(info) || ::stat(folder.c_str(), &parent) != 0 ||
      ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0 ||
      !MayUnlinkFrom(parent, info)) {
    RaiseRuntime(RuntimeError::kPermissionDenied);
  }
  CheckRemovable(AT_FDCWD, path, path, info, force);
  RemoveContent(AT_FDCWD, path, path);
  if (::rmdir(path.c_str()) != 0) RaiseErrno(errno, path, Missing::kPath);
}

}  // namespace tsruntime::fs_detail
