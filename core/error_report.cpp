#include "tsruntime/error_report.h"

#include <cstdlib>
#include <string>

#include "terminal_text.h"
#include "tsruntime/automation/modules.h"
#include "tsruntime/clsTSErrors.h"

namespace tsruntime {
namespace {

ErrorReportPresenter presenter = nullptr;  // set once by the window module, if ever

bool Named(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value;
}

// The report window lives in the user-interface module; it is worth loading only when a
// window can be seen, or when the host chose a Qt platform itself.
void LoadReportWindow() {
  if (presenter || !(Named("DISPLAY") || Named("WAYLAND_DISPLAY") || Named("QT_QPA_PLATFORM")))
    return;
  LoadModule("libtsruntime-ui.so");
}

String Label(const ErrorReportLabel& label) {
  return String(label.text) + String(static_cast<size_t>(label.tabs), u'\t');
}

}  // namespace

String ErrorReportText(const clsTSErrors& errors, StringView MessageText, int32_t ErrorCode) {
  String text = Label(kErrorReportLabels[0]) + errors.ProgramName() + u"\r\n";
  if (!errors.ModuleName().empty()) text += Label(kErrorReportLabels[1]) + errors.ModuleName();
  if (!errors.FunctionName().empty()) text += u"." + errors.FunctionName();
  text += u"\r\n";
  if (ErrorCode != 0) text += u"Код ошибки: " + FromAscii(std::to_string(ErrorCode)) + u"\r\n";
  if (!MessageText.empty()) text += String(MessageText) + u"\r\n";
  text += errors.GetAsText(Variant(u"  --> "), true);
  return text;
}

String ErrorReportCaption(const clsTSErrors& errors) {
  if (errors.ProgramName().empty()) return u"Ошибка";
  return u"Ошибка: " + errors.ProgramName();
}

ErrorReportPresenter SetErrorReportPresenter(ErrorReportPresenter p) {
  const ErrorReportPresenter before = presenter;
  presenter = p;
  return before;
}

void PresentErrorReport(const String& caption, const String& text) {
  LoadReportWindow();
  if (presenter && presenter(caption, text)) return;
  WriteToTerminal(stderr, text);
}

}  // namespace tsruntime
