// The per-thread table of running timers and the system-timer callback that routes
// each tick to its timer.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "tsruntime/CTimer.h"

class QObject;

namespace tsruntime::timer_detail {

inline constexpr int kSlots = 100;

class TimerTable {
 public:
  // This thread's table; null while the thread is ending and its table is gone.
  static TimerTable* ForThisThread();

  // Starts a system timer with the timer's Interval and puts the timer into the first
  // empty slot. False (the timer then stopped) when no system timer could be made;
  // raises eeTooManyTimers when every slot is full, leaving that system timer running.
  bool Start(CTimer& timer);

  // Kills the system timer of the first slot holding a timer with the same id and
  // empties that slot. False when no slot matches (the id is then kept by the timer).
  bool Stop(CTimer& timer);

  // One tick: the first slot whose timer has this id pulses it; others are ignored.
  void OnSystemTimer(uint32_t timer_id);

  // The highest slot number ever filled on this thread (1-based); never lowered.
  int16_t HighWaterMark() const { return mark_; }
  // How many slots hold a timer.
  int RunningTimers() const;
  // System timers alive on this thread, those outside the table included.
  int SystemTimers() const;

  ~TimerTable();

 private:
  class TickHost;
  std::array<Ref<CTimer>, kSlots> slots_;
  int16_t mark_ = 0;
  std::unique_ptr<TickHost> host_;  // created with the first system timer
};

}  // namespace tsruntime::timer_detail
