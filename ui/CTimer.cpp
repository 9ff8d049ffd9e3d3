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
          .Get("Item", &CTimer::Item)
          .Let("Item", &CTimer::LetItem, {"RHS"})
          .Set("Item", &CTimer::SetItem, {"RHS"})
          .Get("Interval", &CTimer::Interval)
          .Let("Interval", &CTimer::LetInterval, {"RHS"})
          .Method("PulseTimer", &CTimer::PulseTimer)
          .Let("Enabled", &CTimer::LetEnabled, {"RHS"})
          .Get("Enabled", &CTimer::Enabled)
          .Event("ThatTime", {})
          .Build();
  return info;
}

}  // namespace tsruntime
