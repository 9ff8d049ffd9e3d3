// A private X server for the tests that need one: Xvfb on a free display number it picks
// itself (-displayfd), DISPLAY pointed at it while the object lives, the keyboard layouts
// asked for, and a window manager (openbox) when asked. Keys and pointer moves are sent
// through XTest, as the keyboard sends them. Everything started ends with the object, or
// with the process.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace tsruntime::testing {

class XvfbServer {
 public:
  XvfbServer(int width, int height, const char* layouts = "us", bool window_manager = false) {
    int fds[2];
    if (pipe(fds) != 0) return;
    const std::string fd = std::to_string(fds[1]);
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    // -noreset: the server would otherwise drop the keymap when its last client leaves.
    children_.push_back(Start({"Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(),
                               "-nolisten", "tcp", "-noreset"}));
    close(fds[1]);
    // Read to the end: Xvfb writes the number and the line end apart and dies if the pipe
    // is gone in between.
    std::string number;
    char buf[16];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) != 0;) {
      if (n > 0) number.append(buf, static_cast<size_t>(n));
      if (n < 0 && errno != EINTR) break;
    }
    close(fds[0]);
    const size_t end = number.find('\n');
    if (end == std::string::npos || end == 0) return;
    name_ = ":" + number.substr(0, end);
    if (const char* old = getenv("DISPLAY")) saved_ = old;
    setenv("DISPLAY", name_.c_str(), 1);
    if (!(x_ = XOpenDisplay(name_.c_str()))) return;
    if (window_manager) children_.push_back(Start({"openbox", "--sm-disable"}));
    // The layouts are set while the window manager starts.
    ready_ = SetLayouts(layouts) && (!window_manager || WaitForWindowManager());
  }
  ~XvfbServer() {
    if (x_) XCloseDisplay(x_);
    for (auto it = children_.rbegin(); it != children_.rend(); ++it) {
      kill(*it, SIGTERM);
      waitpid(*it, nullptr, 0);
    }
    saved_ ? setenv("DISPLAY", saved_->c_str(), 1) : unsetenv("DISPLAY");
  }
  XvfbServer(const XvfbServer&) = delete;
  XvfbServer& operator=(const XvfbServer&) = delete;

  bool ready() const { return ready_; }
  Display* x() const { return x_; }

  // Installs the layouts ("us,ru") and makes `group` the active one.
  bool SetLayouts(const std::string& layouts, int group = 0) {
    const std::string command = "setxkbmap -display " + name_ + " -layout " + layouts;
    return std::system(command.c_str()) == 0 && LockGroup(group);
  }
  // Makes keyboard layout `group` (0 the first) the active one.
  bool LockGroup(int group) {
    if (!XkbLockGroup(x_, XkbUseCoreKbd, static_cast<unsigned>(group))) return false;
    XSync(x_, False);
    return ActiveGroup() == group;
  }
  int ActiveGroup() const {
    XkbStateRec state{};
    return XkbGetState(x_, XkbUseCoreKbd, &state) == Success ? state.group : -1;
  }
  // Presses the keys with these Linux input codes in order and releases them in reverse,
  // as fingers would: {29, 46} is Ctrl+C, or Ctrl+С under the Russian layout.
  void Chord(const std::vector<unsigned>& input_codes) {
    for (unsigned code : input_codes) XTestFakeKeyEvent(x_, code + 8, True, CurrentTime);
    for (auto it = input_codes.rbegin(); it != input_codes.rend(); ++it) {
      XTestFakeKeyEvent(x_, *it + 8, False, CurrentTime);
    }
    XSync(x_, False);
  }
  // Moves the pointer, no button held, to (x, y) in the X window, or on the screen for 0.
  void MovePointer(unsigned long window, int x, int y) {
    XWarpPointer(x_, None, window ? window : DefaultRootWindow(x_), 0, 0, 0, 0, x, y);
    XSync(x_, False);
  }
  // Raises the X window and gives it the keyboard, as a click on it would.
  void Focus(unsigned long window) {
    XRaiseWindow(x_, window);
    XSetInputFocus(x_, window, RevertToParent, CurrentTime);
    XSync(x_, False);
  }

 private:
  static pid_t Start(std::vector<const char*> argv) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // a test program that never stops it takes it along
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(null, 2);
    argv.push_back(nullptr);
    execvp(argv[0], const_cast<char* const*>(argv.data()));
    _exit(127);
  }
  // openbox announces itself on the root window once it manages windows.
  bool WaitForWindowManager() {
    const Atom check = XInternAtom(x_, "_NET_SUPPORTING_WM_CHECK", False);
    for (int tries = 0; tries < 500; usleep(10000), ++tries) {
      Atom type = 0;
      int format = 0;
      unsigned long items = 0, left = 0;
      unsigned char* data = nullptr;
      const int status = XGetWindowProperty(x_, DefaultRootWindow(x_), check, 0, 1, False,
                                            AnyPropertyType, &type, &format, &items, &left, &data);
      if (data) XFree(data);
      if (status == Success && items > 0) return true;
    }
    return false;
  }

  std::vector<pid_t> children_;
  std::string name_;
  std::optional<std::string> saved_;
  Display* x_ = nullptr;
  bool ready_ = false;
};

}  // namespace tsruntime::testing
