// CTimer: the Interval and Enabled rules, the per-thread table, ticks on the event loop.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>

#include "timer_table.h"
#include "tsruntime/CTimer.h"
#include "tsruntime/automation/modules.h"

namespace tsruntime {
namespace {

// Pumps until `done` or a generous deadline; the deadline only guards against a hang.
template <class F>
bool PumpUntil(F done) {
  QElapsedTimer clock;
  clock.start();
  while (!done() && clock.elapsed() < 5000) PumpWaitingMessages();
  return done();
}

TEST(Timer, TicksRaiseThatTimeWhileTheThreadPumps) {
  auto timer = New<CTimer>();
  int ticks = 0;
  timer->OnThatTime([&] { ++ticks; });
  timer->LetInterval(5);
  EXPECT_FALSE(timer->Enabled()) << "Interval alone starts the timer";
  EXPECT_TRUE(PumpUntil([&] { return ticks >= 3; }));
  timer->LetInterval(0);
  const int seen = ticks;
  PumpWaitingMessages();
  EXPECT_EQ(ticks, seen) << "a stopped timer does not tick";
}

}  // namespace
}  // namespace tsruntime
