// Folders: existence, emptiness, creating whole paths, renaming, deleting, long names.

#include "fs_entries.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using namespace fs_detail;

bool IsFolder(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The folder a path names once its trailing separators go; a path of separators alone
// is the root, as "C:\" is a drive's.
std::string FolderPath(StringView path) {
  const String stripped = StripTrailingSeparators(path);
  return stripped.empty() && !path.empty() ? "/" : NativePath(stripped);
}

// Deleting the root is never what a host meant.
bool IsRoot(const std::string& path) {
  struct stat info, root;
  return ::stat(path.c_str(), &info) == 0 && ::stat("/", &root) == 0 &&
         info.st_dev == root.st_dev && info.st_ino == root.st_ino;
}

}  // namespace

bool clsZKFileSystem::IsPathExists(const String& DirFullPath) {
  if (DirFullPath.empty() || DirFullPath.find(u'\0') != String::npos) return false;
  return IsFolder(FolderPath(DirFullPath));
}

bool clsZKFileSystem::IsDirEmpty(const String& DirFullPath) {
  try {
    const std::string folder = NativePath(StripTrailingSeparators(DirFullPath)) + "/";
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return true;  // a folder that cannot be listed lists nothing
    bool empty = true;
    // Every dot-name is passed over, "." and ".." with the rest.
    ForEachEntry(fd, folder, [&](int, std::string_view name, EntryKind) {
      empty = empty && name.starts_with('.');
    });
    return empty;
  } catch (const Error&) {
    return false;
  }
}

bool clsZKFileSystem::DirsMake(const String& DirFullPath) {
  const bool network = IsNetworkPath(DirFullPath);
  if (network && DirFullPath.size() < 3) return false;
  std::vector<String> levels = SplitPath(network ? StringView(DirFullPath).substr(2)
                                                 : StringView(DirFullPath));
  // Only the root of an absolute path is a drive that exists (and is always ready); a
  // network path has no drive to check.
  if (!network && !levels.empty() && !levels[0].empty()) {
    RaiseOwn(xcZKERR_FS_DIRSMAKE, kClassName, "DirsMake",
             LanguageText(u"Диск не найден ", u"Drive is not found ") + levels[0]);
  }
  return WithErrorTrap(xcZKERR_FS_DIRSMAKE, kClassName, "DirsMake",
                       {{"DirFullPath", DirFullPath}}, [&] {
    if (levels.empty()) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    String current = network ? u"//" + levels[0] : levels[0];
    for (size_t i = 1; i < levels.size(); ++i) {
      current += kSeparator;
      current += levels[i];
      const std::string path = NativePath(current);
      if (IsFolder(path)) continue;
      if (::mkdir(path.c_str(), 0777) != 0) RaiseErrno(errno, path, Missing::kPath);
    }
    return true;
  });
}

bool clsZKFileSystem::DirRename(const String& DirFullName, const String& DirShortNameNew) {
  return WithErrorTrap(xcZKERR_FS_DIRRENAME, kClassName, "DirRename",
                       {{"DirFullName", DirFullName}, {"DirShortNameNew", DirShortNameNew}},
                       [&] {
    const std::string path = FolderPath(DirFullName);
    if (!IsFolder(path)) RaiseRuntime(RuntimeError::kPathNotFound);
    RenameInFolder(path, DirShortNameNew);
    return true;
  });
}

bool clsZKFileSystem::DirKill(const String& DirFullName, bool ForceRemove) {
  return WithErrorTrap(xcZKERR_FS_DIRKILL, kClassName, "DirKill",
                       {{"DirFullName", DirFullName}}, [&] {
    // "." and ".." are resolved in the text first, so that the folder deleted is the one
    // the whole path names, and a failure comes before anything is deleted.
    const std::string named = FolderPath(DirFullName);
    if (named.empty()) RaiseRuntime(RuntimeError::kPathNotFound);
    const std::string path = AbsolutePath(named);
    if (!IsFolder(path)) RaiseRuntime(RuntimeError::kPathNotFound);
    if (IsRoot(path)) RaiseRuntime(RuntimeError::kPermissionDenied);
    struct stat info;
    if (::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode)) {
      if (::unlink(path.c_str()) != 0) RaiseErrno(errno, path, Missing::kPath);
    } else {
      RemoveTree(path, ForceRemove);
    }
    return true;
  });
}

String clsZKFileSystem::PathShort2Long(const String& PathShortName) {
  if (IsNetworkPath(PathShortName)) return PathShortName;
  return WithErrorTrap(xcZKERR_FS_PATHSHORT2LONG, kClassName, "PathShort2Long",
                       {{"PathShortName", PathShortName}}, [&] {
    const std::vector<String> levels = SplitPath(PathShortName);
    if (levels.empty()) return PathShortName;
    String result = levels[0];
    for (size_t i = 1; i < levels.size(); ++i) {
      const String asked = result + kSeparator + levels[i];
      const std::string path = NativePath(asked);
      struct stat info;
      const bool there = ::lstat(path.c_str(), &info) == 0;
      if (!there && errno != ENOENT && errno != ENOTDIR) RaiseErrno(errno, path, Missing::kPath);
      // Each existing level is its own long name; a missing one has none.
      result += kSeparator;
      if (there) result += levels[i];
    }
    return result;
  });
}

}  // namespace tsruntime
