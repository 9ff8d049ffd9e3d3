// An Xvfb of the test's own, for the checks that need a real X server. The checks run in
// a child test process on Qt's xcb platform (one process has one Qt platform), selected
// by a gtest filter; the child knows itself by TSRUNTIME_TEST_XCB_CHILD.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace tsruntime::testing {

inline bool IsXcbChild() { return std::getenv("TSRUNTIME_TEST_XCB_CHILD") != nullptr; }

class Xvfb {
 public:
  // Starts Xvfb on a free display; display() is empty when it could not start.
  Xvfb() {
    int fds[2];
    if (pipe(fds) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      close(fds[0]);
      const std::string fd = std::to_string(fds[1]);
      execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "640x480x24", "-nolisten",
             "tcp", static_cast<char*>(nullptr));
      _exit(127);
    }
    close(fds[1]);
    // The number arrives in pieces, ended by a newline.
    std::string number;
    char c = 0;
    while (true) {
      const ssize_t n = read(fds[0], &c, 1);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0 || c == '\n') break;
      number += c;
    }
    close(fds[0]);
    if (!number.empty() && c == '\n') display_ = ":" + number;
  }
  ~Xvfb() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  Xvfb(const Xvfb&) = delete;
  Xvfb& operator=(const Xvfb&) = delete;

  const std::string& display() const { return display_; }

  // Runs this test program's tests matching `filter` on this display with the xcb
  // platform; returns their output, ending with gtest's summary.
  std::string RunChild(const std::string& filter) const {
    std::array<char, 4096> self{};
    const ssize_t len = readlink("/proc/self/exe", self.data(), self.size() - 1);
    if (len <= 0) return "no test program";
    const std::string command = "DISPLAY=" + display_ +
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
  pid_t pid_ = -1;
  std::string display_;
};

}  // namespace tsruntime::testing
