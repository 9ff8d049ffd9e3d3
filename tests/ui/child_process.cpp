#include "child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
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

}  // namespace tsruntime::testing
