// A private Xvfb for the tests that need a real X server, on a free display number it
// picks itself (-displayfd), stopped when the object goes.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace tsruntime::testing {

class XvfbServer {
 public:
  // display() is empty when the server could not start.
  explicit XvfbServer(int width = 640, int height = 480) {
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    int fds[2];
    if (pipe(fds) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      // A server that a test program never stops goes with it.
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      close(fds[0]);
      const std::string fd = std::to_string(fds[1]);
      // -noreset: the server would otherwise drop the keymap when its last client leaves.
      execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(),
             "-nolisten", "tcp", "-noreset", static_cast<char*>(nullptr));
      _exit(127);
    }
    close(fds[1]);
    // Read to the end: Xvfb writes the number and the line end separately and dies if
    // the pipe is gone in between.
    std::string number;
    char buf[16];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) != 0;) {
      if (n > 0) number.append(buf, static_cast<size_t>(n));
      if (n < 0 && errno != EINTR) break;
    }
    close(fds[0]);
    const size_t end = number.find('\n');
    if (end != std::string::npos && end > 0) display_ = ":" + number.substr(0, end);
  }
  ~XvfbServer() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  XvfbServer(const XvfbServer&) = delete;
  XvfbServer& operator=(const XvfbServer&) = delete;

  const std::string& display() const { return display_; }

 private:
  pid_t pid_ = -1;
  std::string display_;
};

}  // namespace tsruntime::testing
