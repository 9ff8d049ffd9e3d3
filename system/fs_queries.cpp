// Disk sizes, the system folders, and normalising a path against a base folder.
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>

#include "fs_paths.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime {
namespace {

using namespace fs_detail;

// Bytes in `blocks` of the file system holding `disk`, as a signed 32-bit count: -1 for
// 2 GiB or more, or when the file system cannot be asked.
int32_t DiskBytes(const String& disk, fsblkcnt_t statvfs::*blocks) {
  try {
    struct statvfs info;
    if (::statvfs(AnsiNativePath(disk).c_str(), &info) != 0) return -1;
    int32_t bytes;
    if (__builtin_mul_overflow(info.f_frsize, info.*blocks, &bytes)) return -1;
    return bytes;
  } catch (const Error&) {
    return -1;
  }
}

}  // namespace

int32_t clsZKFileSystem::GetDiskSpaceAll(const String& DiskName) {
  return DiskBytes(DiskName, &statvfs::f_blocks);
}

int32_t clsZKFileSystem::GetDiskSpaceFree(const String& DiskName) {
  return DiskBytes(DiskName, &statvfs::f_bavail);
}

String clsZKFileSystem::GetSysFolderName(xeZK_GETSYSFOLDER FolderType) {
  String folder;
  switch (FolderType) {
    case xcZK_GETSYSFOLDER_WINDOWS:
      folder = u"/etc";
      break;
    case xcZK_GETSYSFOLDER_SYSTEM:
      folder = u"/usr/lib";
      break;
    case xcZK_GETSYSFOLDER_TEMP: {
      const char* temp = std::getenv("TMPDIR");
      folder = temp && *temp ? FromUtf8(temp) : u"/tmp";
      break;
    }
    default:
      return {};
  }
  return AnsiRoundTrip(StripTrailingSeparators(folder)) + kSeparator;
}

String clsZKFileSystem::NormalizePath(const String& Expression, bool ExpressionIsFolder,
                                      const String& BaseFolder) {
  try {
    // A base folder that cannot be entered leaves the current directory as it was.
    if (!BaseFolder.empty()) {
      [[maybe_unused]] const int ignored = ::chdir(AnsiNativePath(BaseFolder).c_str());
    }
    String result = FromUtf8(AbsolutePath(NativePath(Expression)));
    if (ExpressionIsFolder) result += kSeparator;
    return result;
  } catch (const Error&) {
    return {};
  }
}

}  // namespace tsruntime
