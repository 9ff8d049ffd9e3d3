// The per-thread table of running timers and the system-timer callback that routes
// each tick to its timer.
//
// The system timer is a Qt timer wherever Qt can run one: on every thread once the
// application exists. A thread other than the main one that starts a timer before any
// application exists gets a pumped timer instead: kept in the table's own list and
// ticked by PumpWaitingMessages on that thread, when its interval has passed.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

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

  // Ticks each pumped timer whose interval has passed since its last tick (once, however
  // long ago that was). PumpWaitingMessages calls it.
  void RunDuePumpedTimers();

  ~TimerTable();

 private:
  class TickHost;
  struct PumpedTimer {
    int id;
    std::chrono::milliseconds interval;
    std::chrono::steady_clock::time_point due;
  };
  // A system timer's id, 0 when none could be made.
  int StartSystemTimer(int32_t interval);
  void KillSystemTimer(int id);

  std::array<Ref<CTimer>, kSlots> slots_;
  int16_t mark_ = 0;
  std::unique_ptr<TickHost> host_;  // created with the first Qt timer
  std::vector<PumpedTimer> pumped_;
};

}  // namespace tsruntime::timer_detail
