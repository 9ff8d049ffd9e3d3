#include "timer_table.h"

#include <QAbstractEventDispatcher>
#include <QDebug>
#include <QObject>
#include <QTimerEvent>

#include "application.h"
#include "module_error.h"

namespace tsruntime::timer_detail {

// Receives this thread's system-timer ticks.
class TimerTable::TickHost : public QObject {
 public:
  explicit TickHost(TimerTable& table) : table_(table) {}

 protected:
  void timerEvent(QTimerEvent* event) override {
    // A listener's failure cannot travel through the event loop.
    try {
      table_.OnSystemTimer(static_cast<uint32_t>(event->timerId()));
    } catch (const std::exception& e) {
      qWarning("tsruntime: a ThatTime listener failed: %s", e.what());
    }
  }

 private:
  TimerTable& table_;
};

namespace {

// Plain flag, so that it is still readable while the thread's table is destroyed.
thread_local bool table_gone = false;

struct TableHolder {
  TimerTable table;
  ~TableHolder() { table_gone = true; }  // before the table's slots let go of timers
};

}  // namespace

TimerTable* TimerTable::ForThisThread() {
  if (table_gone) return nullptr;
  thread_local TableHolder holder;
  return &holder.table;
}

TimerTable::~TimerTable() = default;

namespace {

// Far above the ids Qt hands out, which count up from 1 for the whole process.
constexpr int kFirstPumpedId = 0x40000000;
thread_local int next_pumped_id = kFirstPumpedId;

}  // namespace

int TimerTable::StartSystemTimer(int32_t interval) {
  if (ui_detail::EnsureApplication()) {
    if (!host_) host_ = std::make_unique<TickHost>(*this);
    return host_->startTimer(interval);
  }
  const std::chrono::milliseconds every(interval);
  pumped_.push_back({next_pumped_id++, every, std::chrono::steady_clock::now() + every});
  return pumped_.back().id;
}

void TimerTable::KillSystemTimer(int id) {
  if (id >= kFirstPumpedId) {
    std::erase_if(pumped_, [id](const PumpedTimer& t) { return t.id == id; });
  } else if (host_) {
    host_->killTimer(id);
  }
}

void TimerTable::RunDuePumpedTimers() {
  const auto now = std::chrono::steady_clock::now();
  std::vector<int> due;
  for (PumpedTimer& t : pumped_) {
    if (t.due > now) continue;
    due.push_back(t.id);
    t.due = now + t.interval;
  }
  // A listener may start and stop timers meanwhile: each tick goes by id.
  for (int id : due) OnSystemTimer(static_cast<uint32_t>(id));
}

bool TimerTable::Start(CTimer& timer) {
  const int id = StartSystemTimer(timer.Interval());
  timer.timer_id_ = static_cast<uint32_t>(id);
  if (id == 0) {
    timer.timer_id_ = 0;
    timer.LetInterval(0);
    return false;
  }
  for (int slot = 0; slot < kSlots; ++slot) {
    if (slots_[slot]) continue;
    slots_[slot] = Ref<CTimer>(&timer);
    if (slot + 1 > mark_) mark_ = static_cast<int16_t>(slot + 1);
    return true;
  }
  // The system timer stays: hosts have always seen it tick on into nothing.
  ui_detail::RaiseModuleError(eeTooManyTimers);
}

bool TimerTable::Stop(CTimer& timer) {
  for (int slot = 0; slot < mark_; ++slot) {
    if (!slots_[slot] || slots_[slot]->timer_id_ != timer.timer_id_) continue;
    KillSystemTimer(static_cast<int>(timer.timer_id_));
    Ref<CTimer> released = std::move(slots_[slot]);  // may be the last reference
    return true;
  }
  return false;
}

void TimerTable::OnSystemTimer(uint32_t timer_id) {
  for (int slot = 0; slot < mark_; ++slot) {
    if (!slots_[slot] || slots_[slot]->timer_id_ != timer_id) continue;
    Ref<CTimer> timer = slots_[slot];  // a listener may stop it
    timer->PulseTimer();
    return;
  }
}

int TimerTable::RunningTimers() const {
  int running = 0;
  for (const Ref<CTimer>& t : slots_) running += t ? 1 : 0;
  return running;
}

int TimerTable::SystemTimers() const {
  const int pumped = static_cast<int>(pumped_.size());
  QAbstractEventDispatcher* dispatcher = host_ ? QAbstractEventDispatcher::instance() : nullptr;
  if (!dispatcher) return pumped;
  return pumped + static_cast<int>(dispatcher->registeredTimers(host_.get()).size());
}

}  // namespace tsruntime::timer_detail
