// Window messages: the numbers under which Qt events reach ISubclass clients, their
// wParam/lParam packing, and sending or posting any message to a window's chain.
//
//   int32_t r = tsruntime::SendMessage(hwnd, tsruntime::wm::kUser + 1, 7, 9);
//
// A Qt event on a hooked widget becomes (packing as the original platform's):
//   2   destroy       the native window is about to go (widget deleted, or a top-level
//                     closed: the window shown again is a new one); 0, 0
//   3   move          lParam = x | y << 16 (client position, 16 bits each, signed)
//   5   size          wParam = 0 restored, 1 minimised, 2 maximised;
//                     lParam = width | height << 16
//   7/8 set/kill focus wParam 0 (the other window is not known)
//   15  paint         0, 0
//   16  close         0, 0
//   24  show          wParam 1 shown, 0 hidden; lParam 0
//   256 key down      wParam = virtual-key code, naming the key where it sits on a US
//                     keyboard whatever the layout (Russian "ф" is 0x41, A); lParam =
//                     repeat count 1 | scan code << 16 | 1 << 30 when auto-repeated
//   257 key up        wParam = virtual-key code; lParam = 1 | scan code << 16 | 3 << 30
//   258 char          one per byte of the key's text in the ANSI code page (1251: "ф"
//                     is 0xF4, a character it lacks '?'), after its key down; Ctrl with
//                     a letter key gives its control character (Ctrl+С is 3, as Ctrl+C);
//                     wParam = the byte, lParam as the key down's
//   275 timer         wParam = the Qt timer id; lParam 0
//   512 mouse move    with or without a button held while a client listens to 512;
//                     wParam = buttons and keys held (1 left, 2 right, 4 shift, 8 ctrl,
//                     16 middle); lParam = x | y << 16 (client coordinates)
//   513-515 left button down, up, double click; 516-518 right; 519-521 middle: as 512
//   522 wheel         wParam = keys | delta << 16 (120 a notch, away from the user
//                     positive); lParam = screen x | y << 16
// Other Qt events go to the widget untouched. A key press is one Qt event shown as 256
// then 258: the widget's own handling runs at most once for it, at the first point of the
// chain that calls the previous procedure.
//
// The previous procedure of a message that did not come from a Qt event (sent, posted or
// passed to CallOldWindowProc) is the widget's default handling: 16 closes the widget,
// 24 shows it (wParam non-zero) or hides it; every message returns 0.
#pragma once

#include <cstdint>

namespace tsruntime {

namespace wm {
inline constexpr int32_t kDestroy = 2;
inline constexpr int32_t kMove = 3;
inline constexpr int32_t kSize = 5;
inline constexpr int32_t kSetFocus = 7;
inline constexpr int32_t kKillFocus = 8;
inline constexpr int32_t kPaint = 15;
inline constexpr int32_t kClose = 16;
inline constexpr int32_t kShowWindow = 24;
inline constexpr int32_t kKeyDown = 256;
inline constexpr int32_t kKeyUp = 257;
inline constexpr int32_t kChar = 258;
inline constexpr int32_t kTimer = 275;
inline constexpr int32_t kMouseMove = 512;
inline constexpr int32_t kLButtonDown = 513;
inline constexpr int32_t kLButtonUp = 514;
inline constexpr int32_t kLButtonDblClk = 515;
inline constexpr int32_t kRButtonDown = 516;
inline constexpr int32_t kRButtonUp = 517;
inline constexpr int32_t kRButtonDblClk = 518;
inline constexpr int32_t kMButtonDown = 519;
inline constexpr int32_t kMButtonUp = 520;
inline constexpr int32_t kMButtonDblClk = 521;
inline constexpr int32_t kMouseWheel = 522;
inline constexpr int32_t kUser = 0x400;
}  // namespace wm

// Delivers the message synchronously to the window's chain (its clients when hooked,
// else its default handling) and returns the window's result; 0 when `hwnd` is no
// window of this process.
int32_t SendMessage(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam);

// Queues the message for the window's thread; it goes through the chain when that
// thread runs its events. False when `hwnd` is no window of this process.
bool PostMessage(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam);

// Destroys the window: the destroy notice (2) goes through the chain while the widget is
// still whole, then the widget is deleted. False when `hwnd` is no window of this process.
bool DestroyWindow(int32_t hwnd);

}  // namespace tsruntime
