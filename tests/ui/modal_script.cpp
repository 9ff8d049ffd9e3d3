#include "modal_script.h"


namespace tsruntime::testing {
namespace {

constexpr int kPollMs = 10;
constexpr int kDeadlinePolls = 1500;  // fifteen seconds without progress

}  // namespace

bool ModalScript::Matches(const Step& step, const QWidget& window) {
  return window.inherits(step.class_name) &&
         (!step.object_name || window.objectName() == QLatin1String(step.object_name));
}

ModalScript::ModalScript() : timer_(new QTimer) {
  QObject::connect(timer_, &QTimer::timeout, [this] { Poll(); });
  timer_->start(kPollMs);
}

ModalScript::~ModalScript() { delete timer_; }

void ModalScript::Poll() {
  QWidget* modal = QApplication::activeModalWidget();
  if (++polls_ > kDeadlinePolls && modal) {
    // Nothing expected this window, or its step never came: let the test go on and fail.
    trace_ += " | closed an unexpected " + std::string(modal->metaObject()->className());
    modal->close();
    return;
  }
  if (acting_ || Done() || !modal || !Matches(steps_[next_], *modal)) return;
  trace_ += std::string(" | ") + steps_[next_].class_name;
  polls_ = 0;
  acting_ = true;
  // Posted, not called: a step that opens another modal window blocks in its loop, and
  // Qt does not fire this timer again while its own handler is running.
  QMetaObject::invokeMethod(
      qApp,
      [this, modal, act = steps_[next_++].act] {
        acting_ = false;
        act(*modal);
      },
      Qt::QueuedConnection);
}

}  // namespace tsruntime::testing
