// Routing a message through the subclassing chain, beside Qt delivering the same event
// to a plain event filter: what the chain's bookkeeping in dynamic properties costs.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCoreApplication>
#include <QTimerEvent>
#include <QWidget>
#include <cstdlib>

#include "string_peer_ratio.h"
#include "tsruntime/GSubclass.h"
#include "tsruntime/WindowMessages.h"

namespace {

using namespace tsruntime;

class Counter : public ISubclass {
 public:
  int32_t WindowProc(int32_t, int32_t, int32_t, int32_t) override { return ++count; }
  int32_t count = 0;
};

class PeerFilter : public QObject {
 public:
  int32_t count = 0;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::Timer) return false;
    ++count;
    return true;
  }
};

// A Qt timer event on a widget whose chain has one client for message 275.
void TimerEvent(benchmark::State& state, bool library) {
  QWidget widget;
  const auto hwnd = static_cast<int32_t>(widget.winId());
  auto sub = New<GSubclass>();
  auto client = New<Counter>();
  PeerFilter peer;
  if (library) {
    sub->AttachMessage(client, hwnd, wm::kTimer);
  } else {
    widget.installEventFilter(&peer);
  }
  QTimerEvent event(7);
  for (auto _ : state) QCoreApplication::sendEvent(&widget, &event);
  benchmark::DoNotOptimize(client->count + peer.count);
  if (library) sub->DetachMessage(client, hwnd, wm::kTimer);
}
BENCHMARK_CAPTURE(TimerEvent, one_client/tsruntime, true);
BENCHMARK_CAPTURE(TimerEvent, one_client/peer, false);

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication app(argc, argv);
  return tsruntime_bench::RunWithPeerRatios(argc, argv);
}
