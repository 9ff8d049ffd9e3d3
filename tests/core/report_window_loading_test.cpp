// The error report and the module that holds its window: loaded only when a display is
// named, and the report still reaches standard error when that display cannot be reached.
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <string>

#include "support/child_process.h"
#include "tsruntime/clsTSErrors.h"
#include "tsruntime/error_report.h"

namespace tsruntime {
namespace {

constexpr char kTest[] = "ErrorReport.LoadsTheWindowModuleOnlyWhenADisplayIsNamed";

// In a child with its own environment: what reached standard error, and whether the module
// installed its window.
TEST(ErrorReport, LoadsTheWindowModuleOnlyWhenADisplayIsNamed) {
#ifndef TSRUNTIME_UI_MODULE_BUILT
  GTEST_SKIP() << "built without the user-interface module";
#endif
  auto errors = New<clsTSErrors>();
  errors->LetProgramName(u"Склад");
  errors->Add(u"Нет файла", 53);
  const std::string report = ToUtf8(ErrorReportText(*errors, u"", 0));
  if (testing::InTestChild()) {
    ::testing::internal::CaptureStderr();
    errors->ShowErrorMessage();
    const std::string seen = ::testing::internal::GetCapturedStderr();
    std::printf("report %s, window %s\n", seen.find(report) != std::string::npos ? "on standard error" : "lost",
                SetErrorReportPresenter(nullptr) ? "installed" : "absent");
    return;
  }
  for (const auto& [display, expected] : {std::pair<const char*, const char*>{nullptr, "window absent"},
                                          {":64999", "window installed"}}) {  // named, but no server answers there
    const auto child = testing::RunTestInChild(
        kTest, {{"DISPLAY", display ? std::optional<std::string>(display) : std::nullopt},
                {"WAYLAND_DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", std::nullopt}});
    EXPECT_NE(child.output.find(std::string("report on standard error, ") + expected), std::string::npos)
        << (display ? display : "no display") << "\n" << child.output;
  }
}

}  // namespace
}  // namespace tsruntime
