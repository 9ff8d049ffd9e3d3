// Helpers of the ui tests: the test program's desktop (ui_environment.cpp), pumping the
// event loop, a fresh Qt thread, subclassing clients and windows, pictures for the
// documentation, and a script that plays the user's part in modal windows.
#pragma once

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <functional>
#include <string>
#include <vector>

#include "support/outcome.h"
#include "tsruntime/GSubclass.h"
#include "tsruntime/automation/modules.h"

namespace tsruntime::testing {

// The desktop every ui test runs on, as a Russian-speaking user has it: a private Xvfb with
// openbox, the us and ru layouts, LANG=ru_RU.UTF-8, Qt on xcb. In a child process that a
// test started with an environment of its own there is none, and these do nothing.
bool LockGroup(int group);  // 0 us, 1 ru
void Chord(const std::vector<unsigned>& input_codes);  // Linux input codes, as fingers press
void MovePointer(unsigned long window, int x, int y);  // window 0: the screen
void Focus(unsigned long window);

inline std::string Text(const QString& s) { return s.toStdString(); }

// Pumps this thread's events until `done` holds; the deadline only guards against a hang.
inline bool PumpUntil(const std::function<bool()>& done, int deadline_ms = 5000) {
  QElapsedTimer clock;
  clock.start();
  while (!done() && clock.elapsed() < deadline_ms) PumpWaitingMessages();
  return done();
}
// Pumps for a while, for checks that something does not happen.
inline void PumpFor(int ms) { PumpUntil([] { return false; }, ms); }
// Shows `window` and pumps until it has the keyboard, given by the desktop if the window
// manager keeps it for another window.
inline bool ShowActive(QWidget& window) {
  window.show();
  window.activateWindow();
  if (PumpUntil([&] { return window.isActiveWindow(); }, 1000)) return true;
  Focus(window.winId());
  return PumpUntil([&] { return window.isActiveWindow(); });
}

// A client that writes "Name" (":msg", or "msg" when nameless, and ",wParam,lParam" when
// asked) into a shared journal for each message, answers `result`, and may act inside its
// WindowProc.
struct Recorder : ISubclass {
  Recorder(std::string name, std::string* journal, int32_t result = 0, EMsgResponse response = emrConsume)
      : name(std::move(name)), journal(journal), result(result) {
    LetMsgResponse(response);
  }
  int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override {
    *journal += (journal->empty() ? "" : " ") + name;
    if (with_message) *journal += (name.empty() ? "" : ":") + std::to_string(iMsg);
    if (with_params) *journal += "," + std::to_string(wParam) + "," + std::to_string(lParam);
    if (action) action(hwnd, iMsg);
    return result;
  }
  std::string name;
  std::string* journal;
  int32_t result;
  bool with_message = false, with_params = false;
  std::function<void(int32_t hwnd, int32_t msg)> action;
};

// A top-level widget with its native window made, deleted with the test.
struct TestWindow {
  TestWindow() : widget(new QWidget) { widget->winId(); }
  ~TestWindow() { delete widget.data(); }
  int32_t handle() const { return static_cast<int32_t>(widget->winId()); }
  QPointer<QWidget> widget;
};

// With TSRUNTIME_SCREENSHOTS naming a folder, saves the window as a person sees it (frame
// and title bar included) as <folder>/<name>.png, for the documentation.
inline void Photograph(QWidget& window, const char* name) {
  const char* folder = std::getenv("TSRUNTIME_SCREENSHOTS");
  if (!folder || !*folder) return;
  PumpUntil([&] {  // on the screen, painted, and framed by the window manager
    return window.windowHandle() && window.windowHandle()->isExposed() &&
           window.frameGeometry() != window.geometry();
  }, 3000);
  PumpFor(300);
  const QRect frame = window.frameGeometry();
  QGuiApplication::primaryScreen()
      ->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height())
      .save(QDir(QString::fromLocal8Bit(folder)).filePath(QString::fromLatin1(name) + QStringLiteral(".png")));
}

// Plays the user's part for modal windows: each step waits until a modal window of its
// type (and object name, when given) is the active one, then acts on it.
//   ModalScript script;
//   script.On<QFileDialog>([&](QFileDialog& d) { d.selectFile(path); d.accept(); });
//   cdl->ShowOpenFile();  // returns once the step has accepted
//   EXPECT_TRUE(script.Done());
// A modal window that no step takes within fifteen seconds is closed, so that a missed
// step fails the test instead of hanging it.
class ModalScript {
 public:
  ModalScript() { QObject::connect(&timer_, &QTimer::timeout, [this] { Poll(); }), timer_.start(10); }
  template <class W>
  ModalScript& On(std::function<void(W&)> act, const char* object_name = nullptr) {
    steps_.push_back({W::staticMetaObject.className(), object_name, [act](QWidget& w) { act(*qobject_cast<W*>(&w)); }});
    return *this;
  }
  bool Done() const { return next_ == steps_.size(); }
  std::string Trace() const { return trace_; }  // what the script saw, for a failure message

 private:
  struct Step {
    const char* class_name;
    const char* object_name;
    std::function<void(QWidget&)> act;
  };
  void Poll() {
    QWidget* modal = QApplication::activeModalWidget();
    if (++polls_ > 1500 && modal) {
      trace_ += " | closed an unexpected " + std::string(modal->metaObject()->className());
      modal->close();
      return;
    }
    if (acting_ || Done() || !modal || !modal->inherits(steps_[next_].class_name) ||
        (steps_[next_].object_name && modal->objectName() != QLatin1String(steps_[next_].object_name))) {
      return;
    }
    trace_ += std::string(" | ") + steps_[next_].class_name;
    polls_ = 0;
    acting_ = true;
    // Posted, not called: a step that opens another modal window blocks in its loop, and Qt
    // does not fire this timer again while its own handler runs.
    QMetaObject::invokeMethod(qApp, [this, modal, act = steps_[next_++].act] {
      acting_ = false;
      act(*modal);
    }, Qt::QueuedConnection);
  }

  std::vector<Step> steps_;
  size_t next_ = 0;
  bool acting_ = false;
  QTimer timer_;
  int polls_ = 0;
  std::string trace_;
};

// Runs `show` (which opens modal windows) while `script` plays the user; returns what it
// raised ("nothing raised"), and fails the test when a step was left unplayed or a modal
// window came that no step expected.
template <class F>
std::string Play(ModalScript& script, F&& show) {
  const std::string raised = RaisedFields(std::forward<F>(show));
  EXPECT_TRUE(script.Done() && script.Trace().find("unexpected") == std::string::npos) << script.Trace();
  return raised;
}
// The same for one modal window of type W, on which `act` plays the user.
template <class W, class F>
std::string PlayOn(F&& show, std::function<void(W&)> act) {
  ModalScript script;
  script.On<W>(std::move(act));
  return Play(script, std::forward<F>(show));
}

}  // namespace tsruntime::testing
