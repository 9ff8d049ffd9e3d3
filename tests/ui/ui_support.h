// Helpers of the ui tests: pumping the event loop, running on a fresh Qt thread.
#pragma once

#include <QElapsedTimer>
#include <QThread>
#include <functional>

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

// Runs `body` on a new QThread (an event loop of its own, an empty timer table) and
// waits for it.
inline void OnNewQtThread(std::function<void()> body) {
  QThread* thread = QThread::create(std::move(body));
  thread->start();
  thread->wait();
  delete thread;
}

}  // namespace tsruntime::testing
