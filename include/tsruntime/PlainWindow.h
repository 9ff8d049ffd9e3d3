// PlainWindow: a plain top-level window for hosts that have none of their own — scripts
// that want to try window subclassing. An extension of this library for Linux, not a
// class of the original interface. ProgID "TSRuntimeLib.PlainWindow".
//
//   w = tsruntime.Dispatch("TSRuntimeLib.PlainWindow")
//   w.Show()
//   sub.AttachMessage(client, w.Handle, 16)
//   w.SendMessage(16, 0, 0)               # through client's WindowProc
//
// The window is created hidden on the calling thread (which must be the application's
// main thread) and destroyed with the object, or earlier by `Destroy`.
#pragma once

#include <cstdint>
#include <memory>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

class PlainWindow : public Object {
 public:
  PlainWindow();
  ~PlainWindow() override;
  TSRUNTIME_CLASS_INFO;

  // The native window id, the handle GSubclass takes. 0 once the window is destroyed,
  // and after a close until it is shown again (with a new handle).
  int32_t Handle() const;

  String Caption() const;
  void LetCaption(const String& RHS);

  bool Visible() const;
  void LetVisible(bool RHS);
  void Show() { LetVisible(true); }

  // Moves and resizes, in pixels; the window's own size changes arrive as messages 3, 5.
  void Move(int32_t Left, int32_t Top, int32_t Width, int32_t Height);

  // Asks the window to close, as the user's close button does (message 16). A close
  // that goes through destroys the native window (message 2), as on the platform.
  void Close();

  // Destroys the window now; the destroy notice (2) goes through the chain first. The
  // object stays, with Handle 0.
  void Destroy();

  // SendMessage / PostMessage to this window (see WindowMessages.h).
  int32_t SendMessage(int32_t iMsg, int32_t wParam, int32_t lParam);
  bool PostMessage(int32_t iMsg, int32_t wParam, int32_t lParam);

  // A window property as GSubclass keeps them ("C1234", "1234#15C"...): a count as Long,
  // an address as Double (exact: addresses have 47 bits), Empty when absent.
  Variant WindowProperty(const String& Name) const;

 private:
  struct Widget;
  std::unique_ptr<Widget> widget_;
};

}  // namespace tsruntime
