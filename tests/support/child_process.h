// Child processes for tests: this test program again with one test selected, or any other
// program, with a changed environment and, where a rule depends on who runs the code, as
// an ordinary user. CI runs as root, where permission bits stop nothing; an ordinary user
// is a throwaway uid with no account, switched to through setpriv.
#pragma once

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <vector>

extern char** environ;

namespace tsruntime::testing {

struct ChildResult {
  int exit_code = -1;  // -1 when it did not exit normally
  std::string output;  // standard output and standard error together
};

// Environment changes: a value of nullopt removes the variable.
using EnvChanges = std::map<std::string, std::optional<std::string>>;

// A uid no account owns, the same for the whole run of a test program; its gid is the same
// number. Files it creates are its own, and it belongs to no group but that one.
inline uid_t ThrowawayUid() { return 47000 + static_cast<uid_t>(getpid() % 1000); }

// True where this process can start children as ThrowawayUid(): it runs as root and
// setpriv (util-linux) is installed.
inline bool CanRunAsOrdinaryUser() {
  return geteuid() == 0 && (access("/usr/bin/setpriv", X_OK) == 0 || access("/bin/setpriv", X_OK) == 0);
}

// Runs `argv` (argv[0] a path, or a name looked up in PATH) to its end with `env` applied,
// as `uid` when given (through setpriv, every group and capability dropped), with standard
// input from /dev/null.
inline ChildResult RunProgram(std::vector<std::string> argv, const EnvChanges& env = {},
                              std::optional<uid_t> uid = std::nullopt) {
  if (uid) {
    const std::string id = std::to_string(*uid);
    argv.insert(argv.begin(), {"setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups",
                               "--inh-caps=-all", "--"});
  }
  std::vector<std::string> entries;
  for (char** e = environ; *e; ++e) {
    if (!env.count(std::string(*e).substr(0, std::string(*e).find('=')))) entries.push_back(*e);
  }
  for (const auto& [name, value] : env) {
    if (value) entries.push_back(name + "=" + *value);
  }
  std::vector<char*> envp, args;
  for (std::string& entry : entries) envp.push_back(entry.data());
  for (std::string& a : argv) args.push_back(a.data());
  envp.push_back(nullptr);
  args.push_back(nullptr);
  int out[2];
  if (pipe(out) != 0) return {};
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(out[1], 1);
    dup2(out[1], 2);
    close(out[0]);
    close(out[1]);
    environ = envp.data();
    if (freopen("/dev/null", "r", stdin) != nullptr) execvp(args[0], args.data());
    _exit(127);
  }
  close(out[1]);
  ChildResult result;
  char buf[4096];
  for (ssize_t n; (n = read(out[0], buf, sizeof buf)) > 0;) result.output.append(buf, size_t(n));
  close(out[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

// True in a child started by RunTestInChild.
inline bool InTestChild() {
  const char* value = std::getenv("TSRUNTIME_TEST_CHILD");
  return value && std::string(value) == "1";
}

// Runs this test program with --gtest_filter=`test`, `env` applied and, when given, as
// `uid`. The child knows itself by InTestChild() and runs the test's body.
inline ChildResult RunTestInChild(const std::string& test, EnvChanges env = {},
                                  std::optional<uid_t> uid = std::nullopt) {
  env["TSRUNTIME_TEST_CHILD"] = "1";
  char self[4096];
  const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
  return RunProgram({std::string(self, n > 0 ? size_t(n) : 0), "--gtest_filter=" + test}, env, uid);
}

}  // namespace tsruntime::testing
