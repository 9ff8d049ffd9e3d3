// CTimer: the Interval and Enabled rules, the per-thread table of 100 slots, ticks that
// arrive while the thread pumps, and the errors.
#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "support/child_process.h"
#include "support/outcome.h"
#include "timer_table.h"
#include "tsruntime/CTimer.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using testing::PumpFor;
using testing::PumpUntil;

timer_detail::TimerTable& Table() { return *timer_detail::TimerTable::ForThisThread(); }

TEST(Timer, IntervalAndEnabledFollowTheirRules) {
  const struct {
    const char* what;
    std::function<void(CTimer&)> steps;
    std::string expected;  // Interval/Enabled/whether it holds a slot
  } rows[] = {
      {"Interval = 100 starts ticking although Enabled reads False", [](CTimer& t) { t.LetInterval(100); }, "100/False/running"},
      {"Interval = -5 on a running timer stops it, reads 0", [](CTimer& t) { t.LetInterval(100), t.LetInterval(-5); }, "0/False/stopped"},
      {"Enabled = True on a new timer does nothing", [](CTimer& t) { t.LetEnabled(true); }, "0/True/stopped"},
      {"Enabled = True after an Interval keeps it running", [](CTimer& t) { t.LetInterval(100), t.LetEnabled(true); }, "100/True/running"},
      {"Enabled = False stops a running timer", [](CTimer& t) { t.LetInterval(100), t.LetEnabled(false); }, "0/False/stopped"},
      // The interval was forgotten.
      {"Enabled = False then True leaves it stopped", [](CTimer& t) { t.LetInterval(100), t.LetEnabled(false), t.LetEnabled(true); }, "0/True/stopped"},
      {"Enabled = True then Interval starts it", [](CTimer& t) { t.LetEnabled(true), t.LetInterval(50); }, "50/True/running"},
      {"a different Interval restarts it", [](CTimer& t) { t.LetInterval(100), t.LetInterval(70); }, "70/False/running"},
  };
  for (const auto& row : rows) {
    const int running_before = Table().RunningTimers();
    auto t = New<CTimer>();
    row.steps(*t);
    EXPECT_EQ(std::to_string(t->Interval()) + (t->Enabled() ? "/True/" : "/False/") +
                  (Table().RunningTimers() > running_before ? "running" : "stopped"), row.expected) << row.what;
    t->LetInterval(0);
  }
}

// A running timer is held by its slot alone, so it ticks after the host let go of it; a
// stopped one does not tick, while PulseTimer raises ThatTime at once, even then.
TEST(Timer, TicksRaiseThatTimeOnlyWhileRunningEvenWithoutAHostReference) {
  int ticks = 0;
  CTimer* raw = nullptr;
  {
    auto t = New<CTimer>();
    t->OnThatTime([&] { ++ticks; });
    t->LetInterval(2);
    raw = t.get();
  }
  EXPECT_EQ(raw->RefCount(), 1) << "only the slot holds it";
  EXPECT_TRUE(PumpUntil([&] { return ticks >= 3; })) << "it keeps ticking";
  const Ref<CTimer> timer(raw);
  timer->LetInterval(0);
  const int seen = ticks;
  PumpFor(30);
  timer->PulseTimer();
  EXPECT_EQ(ticks, seen + 1) << "a stopped timer does not tick; PulseTimer raises ThatTime at once, even then";
  EXPECT_EQ(Table().RunningTimers(), 0);
}

// One system timer per running timer, kept for the same interval, and a hundred slots per
// thread, filled lowest first: the 101st fails and its system timer is never killed. Each
// plain host thread has a table of its own, and ticks arrive on the thread that pumps.
void FillAHundredSlots(std::latch& both_full) {
  const std::thread::id me = std::this_thread::get_id();
  const auto state = [] {  // system timers/running timers/high-water mark
    return std::to_string(Table().SystemTimers()) + "/" + std::to_string(Table().RunningTimers()) + "/" +
           std::to_string(Table().HighWaterMark());
  };
  std::vector<Ref<CTimer>> timers(100);
  for (auto& t : timers) t = New<CTimer>();
  std::string seen;
  for (int interval : {1000, 1000, 500}) {
    timers[0]->LetInterval(interval);
    seen += state() + " ";
  }
  EXPECT_EQ(seen, "1/1/1 1/1/1 1/1/1 ") << "no second system timer; a new interval kills the old one";
  timers[1]->LetInterval(60000);
  timers[0]->LetInterval(0);
  timers[2]->LetInterval(60000);
  EXPECT_EQ(state(), "2/2/2") << "the third took slot 1, freed by the first";
  for (auto& t : timers) t->LetInterval(60000);
  both_full.arrive_and_wait();  // the other thread's table is full too
  auto extra = New<CTimer>();
  int extra_ticks = 0, ticks = 0;
  extra->OnThatTime([&] { ++extra_ticks; });
  EXPECT_EQ(testing::RaisedFields([&] { extra->LetInterval(1); }),
            "-2147207853\ntsruntime.WindowProc\nNo more than 10 timers allowed per class\n\n0");
  EXPECT_EQ(std::to_string(extra->Interval()) + " " + state(), "1 101/100/100")
      << "it keeps its active interval, and its system timer was not killed";
  timers[41]->LetInterval(0);
  timers[7]->LetInterval(0);
  auto reuse = New<CTimer>();
  reuse->OnThatTime([&] { ticks += std::this_thread::get_id() == me ? 1 : 1000; });
  reuse->LetInterval(5);
  timers[7]->LetInterval(60000);
  EXPECT_EQ(state(), "101/100/100") << "freed slots are reused";
  EXPECT_EQ(testing::Outcome([&] { timers[41]->LetInterval(60000); }), "error -2147207853");
  EXPECT_TRUE(PumpUntil([&] { return ticks >= 3; }) && ticks < 1000) << "ticks " << ticks;
  for (auto& t : timers) t->LetInterval(0);
  reuse->LetInterval(0);
  extra->LetInterval(0);
  EXPECT_EQ(std::to_string(extra->Interval()) + " " + state(), "0 2/0/100")
      << "the mark never drops; no stop finds the two leaked system timers";
  PumpFor(20);
  EXPECT_EQ(extra_ticks, 0) << "its ticks reach no timer";
}

// Two threads at once, also before any application exists (in a child process): there
// threads other than the main one tick through PumpWaitingMessages alone, and Qt is not
// touched (it would take them for the main one).
TEST(Timer, HostThreadsHaveAHundredSlotsEachThe101stFailsAndItsSystemTimerLeaks) {
  std::latch both_full(2);
  { std::jthread first(FillAHundredSlots, std::ref(both_full)), second(FillAHundredSlots, std::ref(both_full)); }
  EXPECT_EQ(QCoreApplication::instance() == nullptr, testing::InTestChild()) << "the child never made an application";
  if (testing::InTestChild()) return;
  const auto child = testing::RunTestInChild("Timer.HostThreadsHaveAHundredSlotsEachThe101stFailsAndItsSystemTimerLeaks");
  EXPECT_TRUE(child.exit_code == 0 && child.output.find("[  PASSED  ] 1 test") != std::string::npos) << child.output;
}

}  // namespace
}  // namespace tsruntime
