// Files: existence, times, deletion, renaming.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "file_content.h"
#include "fs_entries.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using namespace fs_detail;

constexpr int64_t kSecondsPerDay = 86400;

// Days from 1970-01-01 of a proleptic Gregorian date, and back.
int64_t DaysFromCivil(int64_t y, int m, int d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

DateParts CivilFromSeconds(int64_t seconds) {
  int64_t days = seconds / kSecondsPerDay;
  int64_t rest = seconds % kSecondsPerDay;
  if (rest < 0) rest += kSecondsPerDay, --days;
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const int64_t doe = days - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  DateParts p;
  p.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  p.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  p.year = static_cast<int>(yoe + era * 400 + (p.month <= 2));
  p.hour = static_cast<int>(rest / 3600);
  p.minute = static_cast<int>(rest / 60 % 60);
  p.second = static_cast<int>(rest % 60);
  return p;
}

// The local time's offset from UTC now. Both directions use it for every date, so that
// a time set is the time read back.
int64_t OffsetNow() {
  const time_t now = ::time(nullptr);
  struct tm local;
  return ::localtime_r(&now, &local) ? local.tm_gmtoff : 0;
}

// A local date as UTC seconds since 1970; false for values that are no date or lie
// before 1601, the first year a file time can hold.
bool FileTimeOf(const Variant& date, timespec& out) {
  DateParts p;
  try {
    p = ToDate(date).ToParts();
  } catch (const Error&) {
    return false;
  }
  if (p.year < 1601) return false;
  const int64_t local = DaysFromCivil(p.year, p.month, p.day) * kSecondsPerDay +
                        p.hour * 3600 + p.minute * 60 + p.second;
  out.tv_sec = static_cast<time_t>(local - OffsetNow());
  out.tv_nsec = 0;
  return true;
}

// Whether a time read back is the one set; an omitted one is any.
bool Holds(const timespec& read, const timespec& set) {
  return set.tv_nsec == UTIME_OMIT || (read.tv_sec == set.tv_sec && read.tv_nsec == set.tv_nsec);
}

}  // namespace

bool clsZKFileSystem::FileSetDateTime(const String& FileName, const Variant& DateCreated,
                                      const Variant& DateLastAccess,
                                      const Variant& DateLastWrite) {
  timespec times[2] = {{0, UTIME_OMIT}, {0, UTIME_OMIT}};
  timespec ignored;
  if (!DateCreated.isMissing() && !FileTimeOf(DateCreated, ignored)) return false;
  if (!DateLastAccess.isMissing() && !FileTimeOf(DateLastAccess, times[0])) return false;
  if (!DateLastWrite.isMissing() && !FileTimeOf(DateLastWrite, times[1])) return false;
  try {
    const std::string path = AnsiNativePath(FileName);
    // Opened for writing, as the times are set through a handle open to write.
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || S_ISDIR(info.st_mode) || IsReadOnly(info)) {
      return false;
    }
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) return false;
    // A file system clamps a time it cannot hold (ext4 keeps nothing before 1901-12-13):
    // such a time is not set, and the file keeps the times it had.
    struct stat now;
    if (::stat(path.c_str(), &now) == 0 && Holds(now.st_atim, times[0]) &&
        Holds(now.st_mtim, times[1])) {
      return true;
    }
    const timespec old[2] = {info.st_atim, info.st_mtim};
    ::utimensat(AT_FDCWD, path.c_str(), old, 0);
    return false;
  } catch (const Error&) {
    return false;
  }
}

bool clsZKFileSystem::IsFileExists(const String& FileFullName) {
  if (FileFullName.find(u'\0') != String::npos) return false;
  return WholeFileReader(ToUtf8(FileFullName)).ok();
}

bool clsZKFileSystem::FileKill(const String& FileFullName, bool ForceRemove) {
  return WithErrorTrap(xcZKERR_FS_FILEKILL, kClassName, "FileKill",
                       {{"FileFullName", FileFullName}}, [&] {
    const std::string path = NativePath(FileFullName);
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0) RaiseErrno(errno, path, Missing::kFile);
    // A link is judged by what it names, and deleted itself.
    struct stat target;
    if (S_ISLNK(info.st_mode) && ::stat(path.c_str(), &target) == 0) info = target;
    if (S_ISDIR(info.st_mode)) RaiseRuntime(RuntimeError::kFileNotFound);
    if (!ForceRemove && IsReadOnly(info)) RaiseRuntime(RuntimeError::kPermissionDenied);
    if (::unlink(path.c_str()) != 0) RaiseErrno(errno, path, Missing::kFile);
    return true;
  });
}

bool clsZKFileSystem::FileRename(const String& FileFullName, const String& FileShortNameNew) {
  return WithErrorTrap(xcZKERR_FS_FILERENAME, kClassName, "FileRename",
                       {{"FileFullName", FileFullName}, {"FileShortNameNew", FileShortNameNew}},
                       [&] {
    const std::string path = NativePath(FileFullName);
    struct stat info;
    if (!StatEntry(path, info)) RaiseErrno(errno, path, Missing::kFile);
    if (S_ISDIR(info.st_mode)) RaiseRuntime(RuntimeError::kFileNotFound);
    RenameInFolder(path, FileShortNameNew);
    return true;
  });
}

Date FileDateTime(const String& PathName) {
  const std::string path = NativePath(PathName);
  struct stat info;
  if (!StatEntry(path, info)) RaiseRuntime(RuntimeError::kFileNotFound);
  return Date::FromParts(CivilFromSeconds(info.st_mtim.tv_sec + OffsetNow()));
}

}  // namespace tsruntime
