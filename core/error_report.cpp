#include "tsruntime/error_report.h"

#include <string>

#include "terminal_text.h"
#include "tsruntime/clsTSErrors.h"

namespace tsruntime {
namespace {

ErrorReportPresenter presenter = nullptr;  // set once by the window module, if ever

}  // namespace

String ErrorReportText(const clsTSErrors& errors, StringView MessageText, int32_t ErrorCode) {
  String text = u"Программа:\t" + errors.ProgramName() + u"\r\n";
  if (!errors.ModuleName().empty()) text += u"Модуль:\t\t" + errors.ModuleName();
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
  if (presenter && presenter(caption, text)) return;
  WriteToTerminal(stderr, text);
}

}  // namespace tsruntime
