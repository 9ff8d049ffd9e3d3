#include "file_content.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "fs_paths.h"

namespace tsruntime::fs_detail {
namespace {

struct Fd {
  int fd = -1;
  explicit Fd(int f) : fd(f) {}
  ~Fd() {
    if (fd >= 0) ::close(fd);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
};

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

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The file a chain of symbolic links ends at (which may not exist yet), or "" for a
// chain that loops or cannot be read.
std::string FinalTarget(std::string path) {
  for (int hops = 0; hops < 40; ++hops) {
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
    std::string link(static_cast<size_t>(info.st_size > 0 ? info.st_size : 4096) + 1, '\0');
    const ssize_t n = ::readlink(path.c_str(), link.data(), link.size());
    if (n < 0 || static_cast<size_t>(n) >= link.size()) return {};
    link.resize(static_cast<size_t>(n));
    path = link.starts_with('/') ? link : FolderOf(path) + "/" + link;
  }
  return {};
}

// Creates a new temporary file beside `target`, named after it, with `mode` before the
// umask; the name goes to `temp_path`.
int CreateTemporary(const std::string& target, mode_t mode, std::string& temp_path) {
  static constexpr char kLetters[] =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  const size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
  // Room for the dot and the suffix within the 255 bytes a name may have.
  const std::string name = target.substr(slash + 1).substr(0, 200);
  for (int attempt = 0; attempt < 100; ++attempt) {
    uint8_t random[6];
    if (::getrandom(random, sizeof random, 0) != sizeof random) return -1;
    std::string suffix;
    for (uint8_t r : random) suffix += kLetters[r % (sizeof kLetters - 1)];
    temp_path = folder + "." + name + ".tsrt-" + suffix;
    const int fd = ::open(temp_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

void SyncFolder(const std::string& path) {
  const Fd folder(::open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.fd >= 0) ::fsync(folder.fd);
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
  const std::string target = FinalTarget(path);
  if (target.empty()) return false;
  struct stat old;
  const bool existed = ::stat(target.c_str(), &old) == 0;
  if (!existed && errno != ENOENT) return false;
  if (existed && S_ISDIR(old.st_mode)) return false;
  if (existed && read_only == ReadOnlyTarget::kRefuse && IsReadOnly(old)) return false;

  std::string temp;
  const Fd out(CreateTemporary(target, existed ? 0600 : 0666, temp));
  if (out.fd < 0) return false;
  bool ok = WriteAll(out.fd, content);
  if (ok && existed) {
    // Another owner's file stays theirs when we may give it back; when we may not, the
    // content still goes in.
    if (old.st_uid != ::geteuid() || old.st_gid != ::getegid()) {
      [[maybe_unused]] const int ignored = ::fchown(out.fd, old.st_uid, old.st_gid);
    }
    ok = ::fchmod(out.fd, old.st_mode & 07777) == 0;
  }
  ok = ok && ::fsync(out.fd) == 0;
  ok = ok && ::rename(temp.c_str(), target.c_str()) == 0;
  if (!ok) {
    ::unlink(temp.c_str());
    return false;
  }
  SyncFolder(target);
  return true;
}

bool AppendFileContent(const std::string& path, std::span<const uint8_t> content) {
  struct stat old;
  if (::stat(path.c_str(), &old) == 0 && (S_ISDIR(old.st_mode) || IsReadOnly(old))) {
    return false;
  }
  const Fd out(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  if (out.fd < 0) return false;
  return WriteAll(out.fd, content) && ::fsync(out.fd) == 0;
}

}  // namespace tsruntime::fs_detail
