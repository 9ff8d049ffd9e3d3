// Clients and windows for the subclassing tests.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <string>

#include "tsruntime/GSubclass.h"

namespace tsruntime::testing {

// A client that writes "Name" (or "Name:msg" when asked) into a shared journal for each
// message, answers `result`, and may act inside its WindowProc.
class Recorder : public ISubclass {
 public:
  Recorder(std::string name, std::string* journal, int32_t result = 0)
      : name_(std::move(name)), journal_(journal), result_(result) {}

  int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override {
    if (!journal_->empty()) *journal_ += " ";
    *journal_ += name_;
    if (with_message) *journal_ += ":" + std::to_string(iMsg);
    if (with_params) *journal_ += "," + std::to_string(wParam) + "," + std::to_string(lParam);
    if (action) action(hwnd, iMsg);
    return result_;
  }

  bool with_message = false;
  bool with_params = false;
  std::function<void(int32_t hwnd, int32_t msg)> action;

 private:
  std::string name_;
  std::string* journal_;
  int32_t result_;
};

// A top-level widget with its native window made, deleted with the test.
struct TestWindow {
  TestWindow() : widget(new QWidget) { widget->winId(); }
  ~TestWindow() { delete widget.data(); }
  int32_t handle() const { return static_cast<int32_t>(widget->winId()); }
  QPointer<QWidget> widget;
};

}  // namespace tsruntime::testing
