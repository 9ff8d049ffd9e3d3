// GSubclass: intercepting the messages of the process's own windows.
//
// A window is a Qt widget, named by its native window id (`QWidget::winId()`, the X11
// window id under xcb). Its "window procedure" is an event filter; the procedure it
// replaces is the widget's own event handling. Qt events reach clients as the message
// numbers and wParam/lParam packing of the original platform (see WindowMessages.h for
// the list); `SendMessage`/`PostMessage` deliver any number through the same chain.
//
//   auto sub = tsruntime::New<tsruntime::GSubclass>();
//   auto watcher = tsruntime::New<Watcher>();            // an ISubclass
//   sub->AttachMessage(watcher, hwnd, 16);               // WM_CLOSE now reaches watcher
//   sub->DetachMessage(watcher, hwnd, 16);               // and no longer
//
// Bookkeeping lives on the widget as dynamic properties, readable by the host
// (`widget->property("1234#15C")`), for window 1234:
//   "1234"        the previous procedure (a non-zero address while hooked)
//   "C1234"       attachments on the window, over all messages and clients
//   "1234#15C"    clients attached to message 15
//   "1234#15#2"   the client at position 2 (1-based, dense), its raw address
// Counts are int; addresses are quintptr (64 bits: a Linux address does not fit the
// 32-bit word of the original). Writing 0 removes a property.
//
// Dispatch of a message with n clients visits positions n down to 1 (latest attached
// first), setting CurrentMessage each time. Only the client at position 1 decides: before
// its WindowProc, emrPreprocess calls the previous procedure (its result then discarded);
// after the loop, the last visited client's MsgResponse is read again and emrPostProcess
// calls the previous procedure and returns its result; emrConsume never calls it. Each
// client's result replaces the one before, so the earliest client's stands. A message
// without clients goes to the previous procedure; the destroy notice (2) without clients
// first unhooks the window (restoring the previous procedure, removing "1234" and
// "C1234"; per-message entries stay). Dispatch is re-entrant.
//
// Clients are held by raw address: a C++ ISubclass must detach before it is destroyed.
// A late-bound client (any object that is not an ISubclass, such as a Python object,
// reached through its `MsgResponse` and `WindowProc` members by name) is kept alive while
// it is attached, since a script cannot be trusted to detach first.
//
// Errors, source "tsruntime.WindowProc", English whatever the interface language:
//   13081 → 0x80043319 "Can't subclass window" (the widget lives on another thread)
//   13082 → 0x8004331A "Message already handled by another class"
//   13083 → 0x8004331B "Invalid window" (no window has this id)
//   13084 → 0x8004331C "Can't modify external window" (an X11 window of another client)
//   5     → 5, no source or text (a property could not be written)
// A failing AttachMessage leaves the window's properties as they were.
//
// Every property write makes a trace line on the Qt logging category "tsruntime.subclass"
// (debug level, off by default: QT_LOGGING_RULES="tsruntime.subclass.debug=true"):
//   "Changed Window Proc for 4C00003 to 7F2A1C3B4D50"
//   "Changed message count for 4C00003 to 1"
//   "Changed message count for 4C00003 Message 15 to 1"
//   "Changed message class for 4C00003 Message 15 Index 1 to 55D3A1B2C3D0"
//
// Part of libtsruntime-ui.so's interface (link tsruntime::ui); late-bound hosts reach it
// by ProgID "TSRuntimeLib.GSubclass".
#pragma once

#include <cstdint>

#include "tsruntime/ISubclass.h"

namespace tsruntime {

class GSubclass : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // Routes message `iMsg` of window `hwnd` to `iwp`, appended after the clients already
  // attached to it. The first attachment on a window hooks it. Raises 13083 when `hwnd`
  // is no window, 13084 for a window of another process, 13082 when `iwp` is already
  // attached to this message (the same client may attach to other messages).
  void AttachMessage(const Ref<Object>& iwp, int32_t hwnd, int32_t iMsg);

  // Removes `iwp` from the message's clients, closing up the order; the last attachment
  // on the window unhooks it. Never raises: a handle that is no window, a client that is
  // not attached, do nothing.
  void DetachMessage(const Ref<Object>& iwp, int32_t hwnd, int32_t iMsg);

  // The message most recently routed to a client on this thread; 0 before the first.
  // Not reset when dispatch ends.
  int32_t CurrentMessage() const;

  // Calls the window's previous procedure with these arguments and returns its result;
  // 0 when the window is not hooked.
  int32_t CallOldWindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam);
};

}  // namespace tsruntime
