#include "history_file.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace tsrt {
namespace {

// Makes every missing folder of `path` (an absolute path), each private to the user.
bool MakeFolders(const std::string& path) {
  for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return false;
    if (slash == std::string::npos) return true;
  }
}

bool WriteAll(int fd, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t n = write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

// Whether `path` is missing or a regular file: the only things the history may replace.
bool MayReplace(const std::string& path) {
  struct stat st;
  if (lstat(path.c_str(), &st) != 0) return errno == ENOENT;
  return S_ISREG(st.st_mode);
}

}  // namespace

std::optional<std::string> HistoryFile::DefaultPath() {
  std::string data;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && xdg[0] == '/') {
    data = xdg;
  } else {
    const char* home = std::getenv("HOME");
    if (!home || home[0] != '/') {
      const passwd* pw = getpwuid(getuid());
      home = pw ? pw->pw_dir : nullptr;
    }
    if (!home || home[0] != '/') return std::nullopt;
    data = std::string(home) + "/.local/share";
  }
  while (data.size() > 1 && data.back() == '/') data.pop_back();
  return data + "/tsruntime/tsrt_history";
}

std::vector<std::string> HistoryFile::Load() const {
  std::vector<std::string> lines;
  // Never waits on a pipe or a device put where the file should be.
  const int fd = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return lines;
  struct stat st;
  std::string text;
  if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) {
    char buf[65536];
    for (ssize_t n; (n = read(fd, buf, sizeof buf)) > 0;) text.append(buf, static_cast<size_t>(n));
  }
  close(fd);
  for (size_t at = 0; at < text.size();) {
    size_t end = text.find('\n', at);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(at, end - at);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) lines.push_back(std::move(line));
    at = end + 1;
  }
  if (lines.size() > kKept) lines.erase(lines.begin(), lines.end() - kKept);
  return lines;
}

bool HistoryFile::Append(const std::string& line) const {
  const size_t slash = path_.rfind('/');
  if (slash == std::string::npos || slash == 0 || !MakeFolders(path_.substr(0, slash))) return false;
  if (!MayReplace(path_)) return false;
  std::vector<std::string> lines = Load();
  lines.push_back(line);
  if (lines.size() > kKept) lines.erase(lines.begin(), lines.end() - kKept);
  std::string text;
  for (const std::string& l : lines) text += l + '\n';

  std::string temporary = path_ + ".XXXXXX";
  const int fd = mkstemp(temporary.data());  // 0600
  if (fd < 0) return false;
  const bool written = WriteAll(fd, text) && fsync(fd) == 0;
  if (close(fd) != 0 || !written || rename(temporary.c_str(), path_.c_str()) != 0) {
    unlink(temporary.c_str());
    return false;
  }
  return true;
}

}  // namespace tsrt
