// The error report that `clsTSErrors.ShowErrorMessage` shows, and the seam through
// which it is shown.
//
// The report window builds nothing itself: it takes the caption and text made here.
// Until a window presenter is installed, and whenever the installed one declines (no
// display), the report goes to standard error in the terminal's encoding.
#pragma once

#include <cstdint>

#include "tsruntime/automation/string.h"

namespace tsruntime {

class clsTSErrors;

// The report text, line by line (TAB is character 9, each line ends in CR LF):
//   "Программа:" TAB ProgramName            always, also with no program name
//   "Модуль:" TAB TAB ModuleName            when ModuleName is not ""; then, on the
//     "." FunctionName                      same line, this when FunctionName is not "",
//                                           so with no module the line is "." + function;
//                                           the line ends in CR LF either way
//   "Код ошибки: " ErrorCode                when ErrorCode is not 0
//   MessageText                             when it is not ""
//   "  --> " + each record's GetText(True)  one line per record
String ErrorReportText(const clsTSErrors& errors, StringView MessageText, int32_t ErrorCode);

// The labels of the report's first two lines, each with the tabs after it. A window that
// shows the report sets its tab stops so that the values after them start in one column.
struct ErrorReportLabel {
  const char16_t* text;
  int tabs;
};
inline constexpr ErrorReportLabel kErrorReportLabels[] = {{u"Программа:", 1}, {u"Модуль:", 2}};

// "Ошибка: " + ProgramName, or "Ошибка" when there is no program name.
String ErrorReportCaption(const clsTSErrors& errors);

// Shows a report modally and returns when it is closed. Returns false when it cannot
// show one (no display), and the report then goes to standard error.
using ErrorReportPresenter = bool (*)(const String& caption, const String& text);

// Installs the report window (null: none); returns the one installed before.
ErrorReportPresenter SetErrorReportPresenter(ErrorReportPresenter presenter);

// Shows the report through the installed presenter, else on standard error. With a
// display (DISPLAY, WAYLAND_DISPLAY, or a platform named by QT_QPA_PLATFORM) and no
// presenter yet, loads libtsruntime-ui.so first, whose report window installs itself.
void PresentErrorReport(const String& caption, const String& text);

}  // namespace tsruntime
