// The error report and the module that holds its window: loaded only when a display is
// named, and the report still reaches standard error when that display cannot be reached.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "tsruntime/clsTSErrors.h"
#include "tsruntime/error_report.h"

namespace tsruntime {
namespace {

// Sets (or, with nullopt, removes) an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, std::optional<std::string> value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    if (value) setenv(name, value->c_str(), 1);
    else unsetenv(name);
  }
  ~ScopedEnv() {
    if (old_) setenv(name_, old_->c_str(), 1);
    else unsetenv(name_);
  }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

TEST(ErrorReport, LoadsTheWindowModuleOnlyWhenADisplayIsNamed) {
#ifndef TSRUNTIME_UI_MODULE_BUILT
  GTEST_SKIP() << "built without the user-interface module";
#endif
  ScopedEnv wayland("WAYLAND_DISPLAY", std::nullopt), platform("QT_QPA_PLATFORM", std::nullopt);
  auto errors = New<clsTSErrors>();
  errors->LetProgramName(u"Склад");
  errors->Add(u"Нет файла", 53);
  const std::string report = ToUtf8(ErrorReportText(*errors, u"", 0));
  {
    ScopedEnv display("DISPLAY", std::nullopt);
    ::testing::internal::CaptureStderr();
    errors->ShowErrorMessage();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), report);
    EXPECT_EQ(SetErrorReportPresenter(nullptr), nullptr) << "no display: the module stays out";
  }
  {
    ScopedEnv display("DISPLAY", ":64999");  // named, but no server answers there
    ::testing::internal::CaptureStderr();
    errors->ShowErrorMessage();
    EXPECT_NE(::testing::internal::GetCapturedStderr().find(report), std::string::npos)
        << "the window cannot be seen: the report goes to standard error";
    const ErrorReportPresenter window = SetErrorReportPresenter(nullptr);
    EXPECT_NE(window, nullptr) << "the module was loaded and installed its window";
    SetErrorReportPresenter(window);
  }
}

}  // namespace
}  // namespace tsruntime
