// frmError: the modal window in which an error report is shown and can be saved as a text
// file. The window never builds the report; its caller sets the caption and the text.
#pragma once

#include <QDialog>

#include "tsruntime/automation/string.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace tsruntime::ui_detail {

class frmError : public QDialog {
 public:
  // Without an owner; caption "Ошибка" until `SetReport`.
  frmError();

  // The caption, and the report in `boxError` with the caret at its start.
  void SetReport(const String& caption, const String& text);

  // btnSave's click: asks for a file name and writes the report's current text there
  // (see frmError.cpp). The window stays open.
  void SaveReport();

 protected:
  // A new font brings new tab stops.
  void changeEvent(QEvent* event) override;

 private:
  // Tab stops at which the values after the report's labels line up in boxError's font.
  void UpdateTabStops();

  QLabel* lblHeader_ = nullptr;
  QLabel* Image1_ = nullptr;
  QPlainTextEdit* boxError_ = nullptr;
  QPushButton* btnSend_ = nullptr;
  QPushButton* btnSave_ = nullptr;
  QPushButton* btnClose_ = nullptr;
};

// Shows a report in a new frmError, modally, and returns when it is closed: the presenter
// the module installs for `PresentErrorReport` when it loads. False when no window can be
// seen (see gui_session.h); the report then goes to standard error.
bool ShowReportWindow(const String& caption, const String& text);

}  // namespace tsruntime::ui_detail
