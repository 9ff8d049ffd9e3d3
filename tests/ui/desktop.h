// The desktop every ui test runs on, as a Russian-speaking user has it: a private Xvfb
// with a window manager (openbox), the us and ru keyboard layouts, LANG=ru_RU.UTF-8, and
// Qt on its xcb platform (ui_environment.cpp). Keys and pointer moves are sent through
// XTest, as the keyboard sends them; the pointer is moved by the server itself.
#pragma once

#include <sys/types.h>

#include <memory>
#include <vector>

struct _XDisplay;

namespace tsruntime::testing {

class XvfbServer;

class Desktop {
 public:
  // Starts the server and the window manager and points DISPLAY at them. Both end with
  // the object, or with the thread that made it.
  Desktop();
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  bool ready() const { return ready_; }

  // Makes keyboard layout `group` (0 us, 1 ru) the active one.
  bool LockGroup(int group);

  // Presses the keys with these Linux input codes in order and releases them in reverse,
  // as fingers would: {29, 46} is Ctrl+C, or Ctrl+С under the Russian layout.
  void Chord(const std::vector<unsigned>& input_codes);

  // Moves the pointer, with no button held, to (x, y) in the X window, or on the screen
  // when `window` is 0.
  void MovePointer(unsigned long window, int x, int y);

  // Raises the X window and gives it the keyboard, as a click on it would.
  void Focus(unsigned long window);

 private:
  bool WaitForWindowManager();

  std::unique_ptr<XvfbServer> server_;
  _XDisplay* x_ = nullptr;
  pid_t wm_ = -1;
  bool ready_ = false;
};

// The desktop of this test program; null in a child process that a test started with an
// environment of its own.
Desktop* TheDesktop();

}  // namespace tsruntime::testing
