#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

extern char** environ;

namespace tsruntime::testing {
namespace {

std::string SelfPath() {
  char path[4096];
  const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  return n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string();
}

std::string ReadAll(int fd) {
  std::string out;
  char buf[4096];
  for (ssize_t n; (n = read(fd, buf, sizeof buf)) > 0;) out.append(buf, static_cast<size_t>(n));
  return out;
}

bool AcceptsConnections(const std::string& number) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = "/tmp/.X11-unix/X" + number;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  for (int attempt = 0; attempt < 200; ++attempt) {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    const bool connected = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(fd);
    if (connected) return true;
    usleep(50000);
  }
  return false;
}

}  // namespace

bool InTestChild() {
  const char* value = std::getenv("TSRUNTIME_TEST_CHILD");
  return value && std::string(value) == "1";
}

ChildResult RunTestInChild(const std::string& test,
                           const std::map<std::string, std::optional<std::string>>& env) {
  std::map<std::string, std::optional<std::string>> changes = env;
  changes["TSRUNTIME_TEST_CHILD"].emplace(1, '1');
  std::vector<std::string> entries;
  for (char** e = environ; *e; ++e) {
    const std::string entry = *e;
    if (!changes.count(entry.substr(0, entry.find('=')))) entries.push_back(entry);
  }
  for (const auto& [name, value] : changes) {
    if (!value) continue;
    std::string entry = name;
    entry.append(1, '=').append(*value);
    entries.push_back(std::move(entry));
  }
  std::vector<char*> envp;
  for (std::string& entry : entries) envp.push_back(entry.data());
  envp.push_back(nullptr);
  std::string self = SelfPath();
  std::string filter = "--gtest_filter=" + test;
  char* argv[] = {self.data(), filter.data(), nullptr};

  int out[2];
  if (pipe(out) != 0) return {};
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(out[1], 1);
    dup2(out[1], 2);
    close(out[0]);
    close(out[1]);
    execve(self.c_str(), argv, envp.data());
    _exit(127);
  }
  close(out[1]);
  ChildResult result;
  result.output = ReadAll(out[0]);
  close(out[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

XServer::XServer() {
  int ready[2];
  if (pipe(ready) != 0) return;
  pid_ = fork();
  if (pid_ == 0) {
    close(ready[0]);
    const std::string fd = std::to_string(ready[1]);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(null, 2);
    // Xvfb picks a free display and writes its number to the descriptor.
    // -noreset: a server that resets when its last client leaves writes its number again,
    // and our probe below is such a client.
    execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "800x600x24", "-nolisten",
           "tcp", "-noreset", static_cast<char*>(nullptr));
    _exit(127);
  }
  close(ready[1]);
  pollfd wait_for{ready[0], POLLIN, 0};
  char number[32] = {};
  // One read: Xvfb may keep the descriptor open after writing "N\n".
  if (poll(&wait_for, 1, 20000) == 1 && read(ready[0], number, sizeof number - 1) > 0) {
    const std::string digits(number, strspn(number, "0123456789"));
    if (!digits.empty()) display_ = ":" + digits;
  }
  // Kept open while the server runs: a write to a closed pipe would end it.
  ready_fd_ = ready[0];
  // The number may come before the server takes connections; wait until it does.
  if (!display_.empty() && !AcceptsConnections(display_.substr(1))) display_.clear();
}

XServer::~XServer() {
  if (pid_ > 0) {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  if (ready_fd_ >= 0) close(ready_fd_);
}

}  // namespace tsruntime::testing
