#include "desktop.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/xvfb_server.h"

namespace tsruntime::testing {

Desktop::Desktop() : server_(std::make_unique<XvfbServer>(1024, 768)) {
  if (server_->display().empty()) return;
  setenv("DISPLAY", server_->display().c_str(), 1);
  x_ = XOpenDisplay(nullptr);
  if (!x_) return;
  wm_ = fork();
  if (wm_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(null, 2);
    execlp("openbox", "openbox", "--sm-disable", static_cast<char*>(nullptr));
    _exit(127);
  }
  // The layouts are set while the window manager starts.
  ready_ = std::system("setxkbmap -layout us,ru") == 0 && WaitForWindowManager();
}

Desktop::~Desktop() {
  if (x_) XCloseDisplay(x_);
  if (wm_ > 0) {
    kill(wm_, SIGTERM);
    waitpid(wm_, nullptr, 0);
  }
}

bool Desktop::LockGroup(int group) {
  if (!XkbLockGroup(x_, XkbUseCoreKbd, static_cast<unsigned>(group))) return false;
  XSync(x_, False);
  XkbStateRec state{};
  return XkbGetState(x_, XkbUseCoreKbd, &state) == Success && state.group == group;
}

void Desktop::Chord(const std::vector<unsigned>& input_codes) {
  for (unsigned code : input_codes) XTestFakeKeyEvent(x_, code + 8, True, CurrentTime);
  for (auto it = input_codes.rbegin(); it != input_codes.rend(); ++it)
    XTestFakeKeyEvent(x_, *it + 8, False, CurrentTime);
  XSync(x_, False);
}

void Desktop::MovePointer(unsigned long window, int x, int y) {
  XWarpPointer(x_, None, window ? window : DefaultRootWindow(x_), 0, 0, 0, 0, x, y);
  XSync(x_, False);
}

void Desktop::Focus(unsigned long window) {
  XRaiseWindow(x_, window);
  XSetInputFocus(x_, window, RevertToParent, CurrentTime);
  XSync(x_, False);
}

// openbox announces itself on the root window once it manages windows.
bool Desktop::WaitForWindowManager() {
  const Atom check = XInternAtom(x_, "_NET_SUPPORTING_WM_CHECK", False);
  for (int tries = 0; tries < 500; ++tries) {
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, left = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(x_, DefaultRootWindow(x_), check, 0, 1, False,
                                          AnyPropertyType, &type, &format, &items, &left, &data);
    if (data) XFree(data);
    if (status == Success && items > 0) return true;
    usleep(10000);
  }
  return false;
}

}  // namespace tsruntime::testing
