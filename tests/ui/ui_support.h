// Helpers of the ui tests: pumping the event loop, showing a window active, running on a
// fresh Qt thread.
#pragma once

#include <QElapsedTimer>
#include <QThread>
#include <QWidget>
#include <functional>

#include "desktop.h"
#include "tsruntime/automation/modules.h"

namespace tsruntime::testing {

// Pumps this thread's events until `done` holds; the deadline only guards against a hang.
inline bool PumpUntil(const std::function<bool()>& done, int deadline_ms = 5000) {
  QElapsedTimer clock;
  clock.start();
  while (!done() && clock.elapsed() < deadline_ms) PumpWaitingMessages();
  return done();
}

// Pumps for a while, for checks that something does not happen.
inline void PumpFor(int ms) {
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < ms) PumpWaitingMessages();
}

// Shows `window` and pumps until it has the keyboard: asked of the window manager, and
// given by the desktop if the manager keeps it for another window.
inline bool ShowActive(QWidget& window) {
  window.show();
  window.activateWindow();
  if (PumpUntil([&] { return window.isActiveWindow(); }, 1000)) return true;
  if (Desktop* desktop = TheDesktop()) desktop->Focus(window.winId());
  return PumpUntil([&] { return window.isActiveWindow(); });
}

// Runs `body` on a new QThread (an event loop of its own, an empty timer table) and
// waits for it.
inline void OnNewQtThread(std::function<void()> body) {
  QThread* thread = QThread::create(std::move(body));
  thread->start();
  thread->wait();
  delete thread;
}

}  // namespace tsruntime::testing
