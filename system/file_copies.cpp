#include "file_copies.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "fs_paths.h"

namespace tsruntime::fs_detail {
namespace {

constexpr int kSlots = 8;

std::string CopyName(const std::string& target, int slot) {
  const size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
  // Room for the dot and the suffix within the 255 bytes a name may have.
  const std::string name = target.substr(slash + 1).substr(0, 200);
  return folder + "." + name + ".tsrt-" + std::to_string(slot);
}

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Removes the copy `name` when it is this user's and no one holds it. True when the name
// is free afterwards.
bool RemoveIfLeftover(const std::string& name) {
  const Fd copy(::open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (copy.fd < 0) return errno == ENOENT;
  struct stat held, named;
  if (::fstat(copy.fd, &held) != 0 || !S_ISREG(held.st_mode) || held.st_uid != ::geteuid()) {
    return false;
  }
  if (::flock(copy.fd, LOCK_EX | LOCK_NB) != 0) return false;  // its writer lives
  // The name may have been taken over since it was opened.
  if (::lstat(name.c_str(), &named) != 0 || !SameFile(held, named)) return false;
  return ::unlink(name.c_str()) == 0;
}

}  // namespace

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

TemporaryCopy::TemporaryCopy(const std::string& target, mode_t mode) : file_(-1) {
  int second_tries = kSlots;  // slots freed by removing a leftover, tried again
  for (int slot = 0; slot < kSlots; ++slot) {
    const std::string name = CopyName(target, slot);
    const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) {
      if (errno != EEXIST) return;  // the folder takes no new file
      if (RemoveIfLeftover(name) && second_tries-- > 0) --slot;
      continue;
    }
    // Locked at once: a writer cleaning up may have locked and removed it first.
    struct stat info;
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0 && ::fstat(fd, &info) == 0 && info.st_nlink > 0) {
      file_.fd = fd;
      name_ = name;
      return;
    }
    ::close(fd);
  }
}

TemporaryCopy::~TemporaryCopy() {
  if (!name_.empty()) ::unlink(name_.c_str());
}

bool TemporaryCopy::PutInPlace(const std::string& target) {
  if (::rename(name_.c_str(), target.c_str()) != 0) return false;
  name_.clear();
  return true;
}

void RemoveLeftoverCopies(const std::string& target) {
  for (int slot = 0; slot < kSlots; ++slot) {
    const std::string name = CopyName(target, slot);
    struct stat info;
    if (::lstat(name.c_str(), &info) == 0) RemoveIfLeftover(name);
  }
}

}  // namespace tsruntime::fs_detail
