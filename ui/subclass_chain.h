// The subclassing chain: hooking a widget, routing a message to its clients, the
// previous procedure, and the clients themselves (C++ ISubclass or late-bound objects).
#pragma once

#include <QPointer>
#include <QWidget>
#include <cstdint>

#include "message_mapping.h"
#include "tsruntime/ISubclass.h"

class QEvent;

namespace tsruntime::subclass_detail {

// The widget's handling that the chain replaced, for one message: the widget's own
// handling of the Qt event the message came from (run at most once for that event,
// whichever of its messages calls it), or the default handling of a message that came
// from no event (see DefaultProcedure).
class PreviousProcedure {
 public:
  PreviousProcedure(QWidget& widget, QEvent* event) : widget_(&widget), event_(event) {}
  int32_t Call(const Message& m);
  // Whether the widget's own handling of the Qt event has run.
  bool delivered() const { return event_delivered_; }

 private:
  QPointer<QWidget> widget_;
  QEvent* event_;
  bool event_delivered_ = false;
};

// Default handling of a message without a Qt event: 16 hides the widget (and deletes it
// when it asks to be deleted on close); every message returns 0.
int32_t DefaultProcedure(QWidget& widget, int32_t msg, int32_t wParam, int32_t lParam);

// The value stored as a hooked window's previous procedure: DefaultProcedure's address.
quintptr DefaultProcedureAddress();

// Puts the chain in front of the widget's own handling; returns the previous procedure,
// or 0 when the widget cannot be hooked from this thread.
quintptr Hook(QWidget& widget);
// Gives the widget its own handling back.
void Unhook(QWidget& widget);

// Routes one message through the window's clients (see GSubclass.h). The widget must be
// hooked; a widget that is not gives 0.
int32_t Dispatch(QWidget& widget, int32_t hwnd, const Message& m, PreviousProcedure& previous);

// Deletes the widget; inside a window procedure (where Qt may still be delivering to it)
// the deletion waits for the event loop.
void DeleteWidget(QWidget& widget);

// This thread's current message.
int32_t& CurrentMessage();

// A late-bound client stays alive while attached to a window, until it detaches or the
// window is destroyed; C++ ISubclass clients are not held.
void HoldIfLateBound(int32_t hwnd, Object* client);
void ReleaseIfHeld(int32_t hwnd, Object* client);

// Mouse moves reach a widget without a button held only while it tracks the mouse: on
// while a client listens to moves, back as it was when the last one leaves.
void TrackMouseForClients(QWidget& widget, bool listening);

}  // namespace tsruntime::subclass_detail
