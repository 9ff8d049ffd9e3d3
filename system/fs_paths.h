// Path rules and failure numbers shared by the file-system operations.
//
// The interface composes and splits paths at its separator; here that is "/". Paths
// cross into the kernel as UTF-8; the few that the interface routes through the ANSI
// code page take a round trip through it first.
#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

#include "tsruntime/automation/error.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::fs_detail {

inline constexpr char16_t kSeparator = u'/';

// The kernel's form of a path. A NUL would silently cut the name short, so it is the
// runtime's bad file name (52).
std::string NativePath(StringView path);
// The same after a trip through the ANSI code page (characters it lacks become "?").
std::string AnsiNativePath(StringView path);

// `path` without its trailing separators ("/" gives "").
String StripTrailingSeparators(StringView path);
// The parts between separators, empty ones kept; "" has none.
std::vector<String> SplitPath(StringView path);
// The folder part of a path: "." for a bare name, "/" for a name at the root.
std::string FolderOf(const std::string& path);
// "//server/...".
bool IsNetworkPath(StringView path);

// The absolute form of `path` against the current directory: "." and ".." resolved,
// doubled and trailing separators dropped, nothing looked up. Raises when the current
// directory cannot be read.
std::string AbsolutePath(const std::string& path);

// The owner may not write: the interface's read-only attribute.
inline bool IsReadOnly(const struct stat& info) { return (info.st_mode & S_IWUSR) == 0; }

// stat() that follows links, falling back to the link itself when it dangles.
bool StatEntry(const std::string& path, struct stat& info);

// The host runtime's error for a failed system call. What ENOENT means depends on
// what was looked for:
enum class Missing { kFile, kPath };
// ENOENT: for a file, "File not found" (53) when its folder exists, else "Path not
// found" (76); for a folder always 76.
RuntimeError RuntimeErrorFor(int error, const std::string& path, Missing missing);
[[noreturn]] void RaiseErrno(int error, const std::string& path, Missing missing);

}  // namespace tsruntime::fs_detail
