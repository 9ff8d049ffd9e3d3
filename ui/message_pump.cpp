// PumpWaitingMessages for hosts without an event loop of their own: the calling thread's
// Qt events, and the ticks of its timers that Qt cannot serve (see timer_table.h).
#include <QAbstractEventDispatcher>
#include <QCoreApplication>

#include "timer_table.h"
#include "tsruntime/automation/modules.h"

namespace tsruntime::ui_detail {
namespace {

void PumpEvents() {
  if (timer_detail::TimerTable* table = timer_detail::TimerTable::ForThisThread())
    table->RunDuePumpedTimers();
  // Without an application a thread is left alone: Qt would take it for the main one.
  if (!QCoreApplication::instance() || !QAbstractEventDispatcher::instance()) return;
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents(QEventLoop::AllEvents);
  // Deletions asked for by deleteLater wait for a loop level that a pump never leaves.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

[[maybe_unused]] const bool pump_installed = (SetMessagePump(&PumpEvents), true);

}  // namespace
}  // namespace tsruntime::ui_detail
