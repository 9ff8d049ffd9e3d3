// The X server, for keyboard layouts and the pointer: the only code that speaks X11.
//
// libX11 is loaded with dlopen on first use and never linked, so a host on a machine
// without it, or without a display, loads the library and uses everything else; there
// the calls below find no display.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tsruntime::x11 {

class Display {
 public:
  // The display named by $DISPLAY; null when libX11 or the display is missing.
  static std::unique_ptr<Display> Open();
  ~Display();
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  // The XKB layout of each group, as setxkbmap named it ("us", "ru"), in group order.
  std::vector<std::string> GroupLayouts();
  // The group that is active now; nothing when the server has no XKB.
  std::optional<int> ActiveGroup();
  // Makes `group` the locked (active) group and waits until the server has done it.
  bool LockGroup(int group);
  // The pointer's position on the screen, in pixels.
  std::optional<std::pair<int, int>> Pointer();

 private:
  explicit Display(void* connection) : connection_(connection) {}
  void* connection_;
};

}  // namespace tsruntime::x11
