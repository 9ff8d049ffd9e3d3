#include "fs_paths.h"

#include <unistd.h>

#include <cerrno>
#include <memory>

#include "tsruntime/automation/codepage.h"

namespace tsruntime::fs_detail {

std::string NativePath(StringView path) {
  if (path.find(u'\0') != StringView::npos) RaiseRuntime(RuntimeError::kBadFileNameOrNumber);
  return ToUtf8(path);
}

std::string AnsiNativePath(StringView path) { return NativePath(AnsiRoundTrip(path)); }

String StripTrailingSeparators(StringView path) {
  const size_t end = path.find_last_not_of(kSeparator);
  return String(end == StringView::npos ? StringView() : path.substr(0, end + 1));
}

std::vector<String> SplitPath(StringView path) {
  std::vector<String> parts;
  if (path.empty()) return parts;
  size_t start = 0;
  for (;;) {
    const size_t sep = path.find(kSeparator, start);
    parts.emplace_back(path.substr(start, sep - start));
    if (sep == StringView::npos) return parts;
    start = sep + 1;
  }
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool IsNetworkPath(StringView path) { return path.starts_with(u"//"); }

std::string AbsolutePath(const std::string& path) {
  std::string joined;
  if (!path.starts_with('/')) {
    std::unique_ptr<char, decltype(&::free)> cwd(::getcwd(nullptr, 0), &::free);
    if (!cwd) RaiseErrno(errno, ".", Missing::kPath);
    joined = cwd.get();
    joined += '/';
  }
  joined += path;

  std::vector<std::string_view> levels;
  const std::string_view all(joined);
  for (size_t start = 0; start <= all.size();) {
    size_t sep = all.find('/', start);
    if (sep == std::string_view::npos) sep = all.size();
    const std::string_view level = all.substr(start, sep - start);
    if (level == "..") {
      if (!levels.empty()) levels.pop_back();
    } else if (!level.empty() && level != ".") {
      levels.push_back(level);
    }
    start = sep + 1;
  }
  std::string out;
  for (std::string_view level : levels) {
    out += '/';
    out += level;
  }
  return out.empty() ? "/" : out;
}

bool StatEntry(const std::string& path, struct stat& info) {
  return ::stat(path.c_str(), &info) == 0 || ::lstat(path.c_str(), &info) == 0;
}

RuntimeError RuntimeErrorFor(int error, const std::string& path, Missing missing) {
  switch (error) {
    case ENOENT: {
      if (missing == Missing::kPath) return RuntimeError::kPathNotFound;
      const size_t slash = path.rfind('/');
      const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
      struct stat info;
      const bool folder_there = ::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
      return folder_there ? RuntimeError::kFileNotFound : RuntimeError::kPathNotFound;
    }
    case ENOTDIR:
      return RuntimeError::kPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY:
      return RuntimeError::kPermissionDenied;
    case EEXIST:
    case ENOTEMPTY:
      return RuntimeError::kFileAlreadyExists;
    case ENOSPC:
    case EDQUOT:
      return RuntimeError::kDiskFull;
    case ENAMETOOLONG:
    case EINVAL:
      return RuntimeError::kBadFileNameOrNumber;
    case EIO:
      return RuntimeError::kDeviceIoError;
    case ENOMEM:
      return RuntimeError::kOutOfMemory;
    default:
      return RuntimeError::kPathFileAccessError;
  }
}

void RaiseErrno(int error, const std::string& path, Missing missing) {
  RaiseRuntime(RuntimeErrorFor(error, path, missing));
}

}  // namespace tsruntime::fs_detail
