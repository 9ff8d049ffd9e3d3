#include "file_content.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "file_copies.h"
#include "fs_paths.h"

namespace tsruntime::fs_detail {
namespace {

bool WriteAll(int fd, std::span<const uint8_t> content) {
  const uint8_t* at = content.data();
  size_t left = content.size();
  while (left > 0) {
    const ssize_t n = ::write(fd, at, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    at += n;
    left -= static_cast<size_t>(n);
  }
  return true;
}

// Only files and disks hold data to flush; a pipe, a terminal or the null device has
// nothing to flush, and asking is an error there.
bool Flush(int fd, const struct stat& info) {
  return !(S_ISREG(info.st_mode) || S_ISBLK(info.st_mode)) || ::fsync(fd) == 0;
}

bool OutOfSpace(int error) { return error == ENOSPC || error == EDQUOT; }

// Opens for writing without waiting: a pipe with no reader is a failed open (ENXIO)
// rather than a host that hangs. Once open, writes wait as any write does.
int OpenForWriting(const std::string& path, int flags) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags, 0666);
  if (fd >= 0) ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  return fd;
}

// Whether `size` bytes can take the place of `old` bytes in the open file without
// running out part way: the room is reserved first, and the process's file size limit
// checked. A file system that reserves nothing is simply tried.
bool RoomFor(int fd, off_t old, off_t size) {
  rlimit limit;
  if (::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
      static_cast<rlim_t>(size) > limit.rlim_cur) {
    return false;
  }
  if (size <= old || ::fallocate(fd, FALLOC_FL_KEEP_SIZE, old, size - old) == 0) return true;
  return errno == EOPNOTSUPP || errno == ENOSYS;
}

// The interface's own route: the file opened and written as it stands. A device or a
// pipe is written into; a file is overwritten from its start and cut to the new length,
// and keeps its owner, group, permissions and every other name it has. The old content
// stays when the new one cannot fit; a crash part way leaves a mixture.
bool WriteInPlace(const std::string& path, std::span<const uint8_t> content) {
  const Fd out(OpenForWriting(path, 0));
  struct stat info;
  if (out.fd < 0 || ::fstat(out.fd, &info) != 0 || S_ISDIR(info.st_mode)) return false;
  if (!S_ISREG(info.st_mode)) return WriteAll(out.fd, content) && Flush(out.fd, info);
  const auto size = static_cast<off_t>(content.size());
  return RoomFor(out.fd, info.st_size, size) && WriteAll(out.fd, content) &&
         ::ftruncate(out.fd, size) == 0 && Flush(out.fd, info);
}

// Gives the copy the old file's owner, group and permission bits. False when this
// process may not, so that a rename would change them.
bool TakeOver(int fd, const struct stat& old) {
  struct stat now;
  if (::fstat(fd, &now) != 0) return false;
  if ((now.st_uid != old.st_uid || now.st_gid != old.st_gid) &&
      ::fchown(fd, old.st_uid, old.st_gid) != 0) {
    return false;
  }
  // A set-group-ID bit the process may not give is dropped without an error.
  return ::fchmod(fd, old.st_mode & 07777) == 0 && ::fstat(fd, &now) == 0 &&
         now.st_uid == old.st_uid && now.st_gid == old.st_gid &&
         (now.st_mode & 07777) == (old.st_mode & 07777);
}

void SyncFolder(const std::string& path) {
  const Fd folder(::open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.fd >= 0) ::fsync(folder.fd);
}

enum class Route { kDone, kFailed, kInPlace };

// The crash-safe route: a whole copy, flushed, renamed over the target. It gives way to
// writing in place wherever the rename would change what the user sees, or where only
// the file itself has room for the new content.
Route ReplaceByRename(const std::string& target, const struct stat* old,
                      std::span<const uint8_t> content) {
  TemporaryCopy copy(target, old ? 0600 : 0666);
  if (copy.fd() < 0) return Route::kInPlace;  // a folder the user may not write, say
  if (!WriteAll(copy.fd(), content) || ::fsync(copy.fd()) != 0) {
    return OutOfSpace(errno) ? Route::kInPlace : Route::kFailed;
  }
  if (old && !TakeOver(copy.fd(), *old)) return Route::kInPlace;
  if (!copy.PutInPlace(target)) {
    return errno == EPERM || errno == EACCES || errno == EBUSY ? Route::kInPlace
                                                                : Route::kFailed;
  }
  SyncFolder(target);
  return Route::kDone;
}

}  // namespace

WholeFileReader::WholeFileReader(const std::string& path) {
  // Non-blocking, so that a pipe of that name cannot hang the host; regular files
  // ignore the flag.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return;
  struct stat info;
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    return;
  }
  fd_ = fd;
  size_ = info.st_size;
}

WholeFileReader::~WholeFileReader() {
  if (fd_ >= 0) ::close(fd_);
}

bool WholeFileReader::ReadAll(std::vector<uint8_t>& into) {
  // A large file goes through a buffer small enough to stay in the cache, appended to
  // room that was reserved but never zero-filled: each byte is written once into the
  // result, and the extra copy is from the cache.
  constexpr size_t kPiece = size_t{256} << 10;
  const auto n = static_cast<size_t>(size_);
  into.clear();
  std::unique_ptr<uint8_t[]> piece;
  if (n > kPiece) {
    into.reserve(n);
    piece = std::make_unique_for_overwrite<uint8_t[]>(kPiece);
  } else {
    into.resize(n);
  }
  size_t done = 0;
  while (done < n) {
    const size_t want = std::min(kPiece, n - done);
    uint8_t* to = piece ? piece.get() : into.data() + done;
    const ssize_t got = ::pread(fd_, to, want, static_cast<off_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    if (piece) into.insert(into.end(), to, to + got);
    done += static_cast<size_t>(got);
  }
  return true;
}

bool ReplaceFileContent(const std::string& path, std::span<const uint8_t> content,
                        ReadOnlyTarget read_only) {
  struct stat old;
  const bool existed = ::stat(path.c_str(), &old) == 0;
  if (!existed && errno != ENOENT) return false;
  if (existed && S_ISDIR(old.st_mode)) return false;
  if (existed && read_only == ReadOnlyTarget::kRefuse && IsReadOnly(old)) return false;
  // Devices and pipes are written into, never replaced.
  if (existed && !S_ISREG(old.st_mode)) return WriteInPlace(path, content);
  const std::string target = FinalTarget(path);
  if (target.empty()) return false;
  bool done = false;
  if (existed && old.st_nlink > 1) {
    done = WriteInPlace(target, content);  // a rename would part it from its other names
  } else {
    switch (ReplaceByRename(target, existed ? &old : nullptr, content)) {
      case Route::kDone:
        done = true;
        break;
      case Route::kInPlace:
        done = existed && WriteInPlace(target, content);
        break;
      case Route::kFailed:
        break;
    }
  }
  if (done) RemoveLeftoverCopies(target);
  return done;
}

bool AppendFileContent(const std::string& path, std::span<const uint8_t> content) {
  struct stat old;
  if (::stat(path.c_str(), &old) == 0 && (S_ISDIR(old.st_mode) || IsReadOnly(old))) {
    return false;
  }
  Fd out(OpenForWriting(path, O_APPEND));
  std::string made;  // the file this call creates, through any links to it
  if (out.fd < 0 && errno == ENOENT) {
    made = FinalTarget(path);
    out.fd = made.empty() ? -1 : OpenForWriting(made, O_APPEND | O_CREAT | O_EXCL);
  }
  struct stat info;
  if (out.fd < 0 || ::fstat(out.fd, &info) != 0 || S_ISDIR(info.st_mode)) return false;
  if (WriteAll(out.fd, content) && Flush(out.fd, info)) return true;
  // What was there stays as it was: a failed append is cut back, a file it made goes.
  if (!made.empty()) {
    ::unlink(made.c_str());
  } else if (S_ISREG(info.st_mode)) {
    [[maybe_unused]] const int ignored = ::ftruncate(out.fd, info.st_size);
  }
  return false;
}

}  // namespace tsruntime::fs_detail
