// Runs one test of this program again in a child process, with a changed environment: for
// what a process must not see (a display). The child knows itself by TSRUNTIME_TEST_CHILD=1
// and runs the test's body. (Children under an X server of their own: x_server.h.)
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

}  // namespace tsruntime::testing
