#include "tsruntime/CTimer.h"

#include "module_error.h"
#include "timer_table.h"

namespace tsruntime {

using timer_detail::TimerTable;

CTimer::CTimer() = default;

CTimer::~CTimer() {
  try {
    LetInterval(0);
  } catch (const Error&) {  // stopping raises nothing; a destructor must not anyway
  }
}

void CTimer::LetInterval(int32_t RHS) {
  requested_ = RHS;
  TimerTable* table = TimerTable::ForThisThread();
  if (RHS >= 1 && RHS != active_) {
    if (active_ != 0 && table) table->Stop(*this);
    active_ = RHS;
    if (!table || !table->Start(*this)) ui_detail::RaiseModuleError(eeCantCreateTimer);
  } else if (RHS <= 0 && active_ > 0) {
    active_ = 0;
    if (table) table->Stop(*this);
  }
}

void CTimer::LetEnabled(bool RHS) {
  enabled_ = RHS;
  LetInterval(RHS ? requested_ : 0);
}

void CTimer::PulseTimer() {
  std::vector<Variant> args;
  RaiseEvent(u"ThatTime", args);
}

int CTimer::OnThatTime(std::function<void()> listener) {
  return Connect([listener = std::move(listener)](StringView event, std::vector<Variant>&) {
    if (event == u"ThatTime") listener();
  });
}

TSRUNTIME_DEFINE_CLASS(CTimer) {
  static const ClassInfo info =
      ClassBuilder<CTimer>("CTimer")
          .Help(u"A window-less periodic timer raising ThatTime every Interval milliseconds on "
                u"its thread's event loop.")
          .Get("Item", &CTimer::Item)
          .Help(u"Free data the host keeps with the timer, any value or object; never read by it.")
          .Let("Item", &CTimer::LetItem, {"RHS"})
          .Set("Item", &CTimer::SetItem, {"RHS"})
          .Get("Interval", &CTimer::Interval)
          .Help(u"The running interval in milliseconds, 0 while stopped; assigning 1 or more "
                u"starts the timer, 0 or less stops it.")
          .Let("Interval", &CTimer::LetInterval, {"RHS"})
          .Method("PulseTimer", &CTimer::PulseTimer)
          .Help(u"Raises ThatTime at once, running or not.")
          .Let("Enabled", &CTimer::LetEnabled, {"RHS"})
          .Help(u"The last value assigned; True starts the timer with the requested interval, "
                u"False stops it and forgets the interval.")
          .Get("Enabled", &CTimer::Enabled)
          .Event("ThatTime", {})
          .Help(u"Raised on every tick, on the thread that created the timer.")
          .Build();
  return info;
}

}  // namespace tsruntime
