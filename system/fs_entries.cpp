#include "fs_entries.h"

#include <cstdio>

namespace tsruntime::fs_detail {
namespace {

bool HoldsReadOnly(int at, const std::string& name, const std::string& shown_path) {
  struct stat info;
  if (::fstatat(at, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
    RaiseErrno(errno, shown_path, Missing::kPath);
  }
  // A link has no permissions of its own.
  if (!S_ISLNK(info.st_mode) && IsReadOnly(info)) return true;
  if (!S_ISDIR(info.st_mode)) return false;
  bool found = false;
  ForEachEntry(OpenFolder(at, name, shown_path, false), shown_path,
               [&](int fd, std::string_view entry, EntryKind) {
                 found = found || HoldsReadOnly(fd, std::string(entry),
                                                shown_path + "/" + std::string(entry));
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
