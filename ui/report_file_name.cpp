#include "report_file_name.h"

#include <cstdio>

namespace tsruntime::ui_detail {

String ProposedReportName(const std::tm& local) {
  char stamp[64];
  std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d-%02d", local.tm_year + 1900,
                local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min);
  return u"Отчёт об ошибке [" + FromAscii(stamp) + u"].txt";
}

String ProposedReportNameNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return ProposedReportName(local);
}

String ReportFileName(const clsZKString& strings, const String& chosen) {
  const String extension = strings.GetRight(chosen, u".");
  if (extension.empty() || extension.size() >= 4) return chosen + u".txt";
  return chosen;
}

}  // namespace tsruntime::ui_detail
