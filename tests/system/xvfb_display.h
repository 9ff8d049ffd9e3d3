// A private X server for the keyboard and pointer tests: Xvfb on a free display that
// it picks itself, with the keyboard layouts a test asks for.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

namespace tsruntime::testing {

class XvfbDisplay {
 public:
  XvfbDisplay() {
    int fds[2];
    if (pipe(fds) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      close(fds[0]);
      const std::string fd = std::to_string(fds[1]);
      // -noreset: the server would otherwise drop the keymap when its last client leaves.
      execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-nolisten", "tcp", "-noreset",
             static_cast<char*>(nullptr));
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
    number = number.substr(0, number.find('\n'));
    if (number.empty()) {
      ADD_FAILURE() << "no display number from Xvfb";
      return;
    }
    name_ = ":" + number;
    const char* old = getenv("DISPLAY");
    saved_ = old ? old : "";
    had_display_ = old != nullptr;
    setenv("DISPLAY", name_.c_str(), 1);
    x_ = XOpenDisplay(name_.c_str());
  }
  ~XvfbDisplay() {
    if (x_) XCloseDisplay(x_);
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      waitpid(pid_, nullptr, 0);
    }
    if (had_display_) {
      setenv("DISPLAY", saved_.c_str(), 1);
    } else {
      unsetenv("DISPLAY");
    }
  }
  XvfbDisplay(const XvfbDisplay&) = delete;
  XvfbDisplay& operator=(const XvfbDisplay&) = delete;

  bool ready() const { return x_ != nullptr; }
  Display* x() const { return x_; }

  // Installs the layouts ("us,ru") and makes `group` the active one.
  bool SetLayouts(const std::string& layouts, int group = 0) {
    const std::string command = "setxkbmap -display " + name_ + " -layout " + layouts;
    if (std::system(command.c_str()) != 0) return false;
    return LockGroup(group);
  }
  bool LockGroup(int group) {
    if (!XkbLockGroup(x_, XkbUseCoreKbd, static_cast<unsigned>(group))) return false;
    XSync(x_, False);
    return ActiveGroup() == group;
  }
  int ActiveGroup() const {
    XkbStateRec state{};
    if (XkbGetState(x_, XkbUseCoreKbd, &state) != Success) return -1;
    return state.group;
  }

 private:
  pid_t pid_ = -1;
  std::string name_;
  std::string saved_;
  bool had_display_ = false;
  Display* x_ = nullptr;
};

}  // namespace tsruntime::testing
