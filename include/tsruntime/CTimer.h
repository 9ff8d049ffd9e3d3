// CTimer: a window-less periodic timer. Set `Interval` in milliseconds and receive the
// event `ThatTime` on every tick, on the thread that created the timer, while that
// thread runs its event loop (a host without one pumps, see PumpWaitingMessages). Any
// host thread may run timers: a Qt thread, the main one, a std::thread or a Python one.
//
//   auto t = tsruntime::New<tsruntime::CTimer>();
//   t->OnThatTime([] { /* every 250 ms */ });
//   t->LetInterval(250);          // starts at once, although Enabled reads False
//   t->LetEnabled(false);         // stops, and forgets the interval
//   t->LetEnabled(true);          // stays stopped until Interval is written again
//
// Each thread has a table of 100 running timers with a high-water mark (the highest slot
// ever filled, never lowered). A running timer sits in a slot by a counted reference, so
// it outlives the host's references and ticks on (into no listener) until it is stopped.
// Ticks route by the system timer's id to the first slot holding a timer with that id.
//
// Errors carry the source "tsruntime.WindowProc" and English texts, whatever the
// interface language:
//   - the 101st running timer of a thread raises 0x80043553 (-2147207853) "No more than
//     10 timers allowed per class" (the limit is 100; the text is kept as hosts know it).
//     Its system timer is left running, outside the table: it ticks into nothing for the
//     life of the thread, and no later stop finds it;
//   - a system timer that cannot be made raises 0x80043554 (-2147207852) "Can't create
//     system timer"; the timer is then stopped.
//
// This file is part of the interface of libtsruntime-ui.so: link tsruntime::ui to call it
// early bound. Late-bound hosts reach it by ProgID "TSRuntimeLib.CTimer" without linking.
#pragma once

#include <cstdint>
#include <functional>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

// Codes of the timer errors; raised numbers are the code Or 0x80040000.
enum EErrorTimer : int32_t {
  eeBaseTimer = 13650,
  eeTooManyTimers = 13651,    // raised as 0x80043553
  eeCantCreateTimer = 13652,  // raised as 0x80043554
};

namespace timer_detail {
class TimerTable;
}

class CTimer : public Object {
 public:
  CTimer();
  // Sets Interval to 0: a running timer stops and leaves its slot. (A running timer is
  // only destroyed after it has been stopped, since its slot holds a reference; the one
  // left outside the table by the 101st start is destroyed while its system timer runs.)
  ~CTimer() override;
  TSRUNTIME_CLASS_INFO;

  // Free data the host keeps with the timer, any value or object; never read by it.
  const Variant& Item() const { return item_; }
  void LetItem(const Variant& RHS) { item_ = RHS; }
  void SetItem(const Variant& RHS) { item_ = RHS; }

  // The interval of the running system timer in milliseconds; 0 while stopped.
  int32_t Interval() const { return active_; }

  // Stores `RHS` as the requested interval, then:
  //   - 1 or more and different from the active interval: stops a running timer and
  //     starts a new system timer with this interval (a new id);
  //   - 1 or more and equal to the active interval: nothing (no restart);
  //   - 0 or less: stops a running timer; a stopped one stays as it is.
  // Starting works whatever `Enabled` says. Raises the two timer errors above.
  void LetInterval(int32_t RHS);

  // Raises ThatTime at once, synchronously, running or not. Hidden from listings of
  // the original interface; the tick itself goes through here.
  void PulseTimer();

  // The last value written; it does not tell whether a system timer runs.
  bool Enabled() const { return enabled_; }
  // Stores the flag; True then writes the requested interval to Interval (so it may
  // raise), False writes 0 — which also overwrites the requested interval, so a later
  // Enabled = True leaves the timer stopped until Interval is written.
  void LetEnabled(bool RHS);

  // Calls `listener` on every ThatTime; returns a cookie for Disconnect.
  int OnThatTime(std::function<void()> listener);

 private:
  friend class timer_detail::TimerTable;
  Variant item_;
  int32_t active_ = 0;     // the running system timer's interval, 0 when stopped
  int32_t requested_ = 0;  // the last value written to Interval
  uint32_t timer_id_ = 0;  // the system timer's id, 0 when none (kept after a failed stop)
  bool enabled_ = false;
};

}  // namespace tsruntime
