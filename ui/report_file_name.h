// The report window's file names: the one it proposes and the one it writes.
#pragma once

#include <ctime>

#include "tsruntime/clsZKString.h"

namespace tsruntime::ui_detail {

// "Отчёт об ошибке [yyyy-mm-dd hh-nn].txt" for a local time: hours 0 to 23, a hyphen
// where a colon cannot stand in a file name.
//   09:05 on 1 February 2025 -> "Отчёт об ошибке [2025-02-01 09-05].txt"
String ProposedReportName(const std::tm& local);

// The proposal for now, in local time.
String ProposedReportNameNow();

// The chosen name with ".txt" appended unless it ends in an extension of one to three
// characters: the text after the last "." (`GetRight`), even one holding a "/".
//   "report" -> "report.txt", "report.log" kept, "report.text" -> "report.text.txt",
//   "report." -> "report..txt"
String ReportFileName(const clsZKString& strings, const String& chosen);

}  // namespace tsruntime::ui_detail
