// An Xvfb of the test's own, for the checks that need a real X server. The checks run in
// a child test process on Qt's xcb platform (one process has one Qt platform), selected
// by a gtest filter; the child knows itself by TSRUNTIME_TEST_XCB_CHILD.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/xvfb_server.h"

namespace tsruntime::testing {

inline bool IsXcbChild() { return std::getenv("TSRUNTIME_TEST_XCB_CHILD") != nullptr; }

class Xvfb {
 public:
  Xvfb() = default;
  Xvfb(const Xvfb&) = delete;
  Xvfb& operator=(const Xvfb&) = delete;

  // Empty when the server could not start.
  const std::string& display() const { return server_.display(); }

  // Runs this test program's tests matching `filter` on this display with the xcb
  // platform; returns their output, ending with gtest's summary.
  std::string RunChild(const std::string& filter) const {
    std::array<char, 4096> self{};
    const ssize_t len = readlink("/proc/self/exe", self.data(), self.size() - 1);
    if (len <= 0) return "no test program";
    const std::string command = "DISPLAY=" + display() +
                                " QT_QPA_PLATFORM=xcb TSRUNTIME_TEST_XCB_CHILD=1"
                                " LSAN_OPTIONS=suppressions=" TEST_SOURCE_DIR
                                "/ui/lsan_suppressions.txt '" +
                                std::string(self.data(), static_cast<size_t>(len)) +
                                "' --gtest_filter='" + filter + "' 2>&1";
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return "cannot start";
    std::array<char, 1024> chunk{};
    while (fgets(chunk.data(), chunk.size(), pipe)) output += chunk.data();
    const int status = pclose(pipe);
    return output + "exit " + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  }

 private:
  XvfbServer server_;
};

}  // namespace tsruntime::testing
