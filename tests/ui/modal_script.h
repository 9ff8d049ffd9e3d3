// Plays the user's part for modal windows: each step waits until a modal window of its
// type is the active one, then acts on it (fills in a value, accepts, rejects, clicks).
//
//   ModalScript script;
//   script.On<QFileDialog>([&](QFileDialog& d) { d.selectFile(path); d.accept(); });
//   cdl->ShowOpenFile();              // returns once the step has accepted
//   EXPECT_TRUE(script.Done());
//
// Steps run from the event loop of the modal window they wait for; the application exists
// from the start (ui_environment.cpp). A modal window that no step takes within the
// deadline is closed, so that a missed step fails the test instead of hanging it.
#pragma once

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

namespace tsruntime::testing {

class ModalScript {
 public:
  ModalScript();
  ~ModalScript();
  ModalScript(const ModalScript&) = delete;
  ModalScript& operator=(const ModalScript&) = delete;

  // A step for the next modal window of class W (and of that object name, when given).
  template <class W>
  ModalScript& On(std::function<void(W&)> act, const char* object_name = nullptr) {
    steps_.push_back({W::staticMetaObject.className(), object_name, [act](QWidget& w) {
                        if (W* typed = qobject_cast<W*>(&w)) act(*typed);
                      }});
    return *this;
  }

  // Whether every step has run.
  bool Done() const { return next_ == steps_.size(); }
  // What the script saw last, for a failure message.
  std::string Trace() const { return trace_; }

 private:
  struct Step {
    const char* class_name;
    const char* object_name;
    std::function<void(QWidget&)> act;
  };
  static bool Matches(const Step& step, const QWidget& window);
  void Poll();

  std::vector<Step> steps_;
  size_t next_ = 0;
  bool acting_ = false;
  QTimer* timer_ = nullptr;
  int polls_ = 0;
  std::string trace_;
};

}  // namespace tsruntime::testing
