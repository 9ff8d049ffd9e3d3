// Runs one test of this program again in a child process, with a changed environment:
// for what one process can do only once (choose its Qt platform) or must not see (a
// display). The child knows itself by TSRUNTIME_TEST_CHILD=1 and runs the test's body.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace tsruntime::testing {

struct ChildResult {
  int exit_code = -1;  // -1 when it did not exit normally
  std::string output;  // standard output and standard error together
};

// True in the child.
bool InTestChild();

// Runs this program with --gtest_filter=`test` and the environment changed by `env` (a
// value of nullopt removes the variable).
ChildResult RunTestInChild(const std::string& test,
                           const std::map<std::string, std::optional<std::string>>& env);

// Starts an Xvfb on a free display and stops it when destroyed.
class XServer {
 public:
  XServer();
  ~XServer();
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;
  // ":N", or "" when the server did not start.
  const std::string& display() const { return display_; }

 private:
  int pid_ = -1;
  int ready_fd_ = -1;
  std::string display_;
};

}  // namespace tsruntime::testing
