// A private X server for the keyboard and pointer tests: Xvfb on a free display that
// it picks itself, with the keyboard layouts a test asks for.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "support/xvfb_server.h"

namespace tsruntime::testing {

class XvfbDisplay {
 public:
  XvfbDisplay() {
    if (server_.display().empty()) {
      ADD_FAILURE() << "no display number from Xvfb";
      return;
    }
    name_ = server_.display();
    const char* old = getenv("DISPLAY");
    saved_ = old ? old : "";
    had_display_ = old != nullptr;
    setenv("DISPLAY", name_.c_str(), 1);
    x_ = XOpenDisplay(name_.c_str());
  }
  ~XvfbDisplay() {
    if (x_) XCloseDisplay(x_);
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
  XvfbServer server_;
  std::string name_;
  std::string saved_;
  bool had_display_ = false;
  Display* x_ = nullptr;
};

}  // namespace tsruntime::testing
