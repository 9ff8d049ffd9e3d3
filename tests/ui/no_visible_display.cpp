// Wherever no window can be shown to a person, nothing waits for one and nothing aborts
// the host: the error report goes to standard error, and every dialog ends at once,
// unshown, as a dialog that could not start.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <cstdio>
#include <fstream>

#include "support/child_process.h"
#include "support/outcome.h"
#include "tsruntime/clsTSErrors.h"
#include "tsruntime/clsZKCDL.h"

namespace tsruntime {
namespace {

constexpr char kTest[] = "NoVisibleDisplay.ReportsGoToStandardErrorAndDialogsEndUnshown";

// In the child: the report, then each dialog's outcome on one line.
void ShowEverything() {
  alarm(60);  // a window that waits for somebody ends the child instead of the test run
  auto errors = New<clsTSErrors>();
  errors->LetProgramName(u"Склад");
  errors->Add(u"Нет файла", 53);
  errors->ShowErrorMessage();
  const std::string help = "/tmp/help-" + std::to_string(getpid()) + ".txt";
  std::ofstream(help) << "help";
  std::string line, folder_path = "unset";
  // A fresh object for each, every cancellation set to raise.
  for (const auto& [name, show] : {std::pair{"open", &clsZKCDL::ShowOpenFile}, {"save", &clsZKCDL::ShowSaveFile},
                                   {"color", &clsZKCDL::ShowColor}, {"font", &clsZKCDL::ShowFont},
                                   {"folder", &clsZKCDL::ShowFolder}, {"help", &clsZKCDL::ShowHelp}}) {
    auto cdl = New<clsZKCDL>();
    cdl->LetCancelError(true);
    cdl->LetFolderPath(u"/tmp");
    cdl->LetHelpFileFullName(FromUtf8(help));
    const std::string raised = testing::RaisedFields([&] { ((*cdl).*show)(); });
    line += std::string(name) + " " + std::to_string(cdl->APIReturn()) + "/" +
            std::to_string(cdl->ExtendedError()) + (raised == "nothing raised" ? "" : " raised") + "; ";
    if (show == &clsZKCDL::ShowFolder) folder_path = ToUtf8(cdl->FolderPath());
  }
  std::remove(help.c_str());
  std::printf("dialogs: %sfolder path '%s', platform %s\n", line.c_str(), folder_path.c_str(),
              qGuiApp ? QGuiApplication::platformName().toUtf8().constData() : "none");
}

TEST(NoVisibleDisplay, ReportsGoToStandardErrorAndDialogsEndUnshown) {
  if (testing::InTestChild()) return ShowEverything();
  const std::string unshown = "dialogs: open 0/2; save 0/2; color 0/0; font 0/0; folder 0/0; "
                              "help 0/0; folder path '', platform ";
  const struct {
    const char* what;
    testing::EnvChanges env;
    std::string platform;
  } rows[] = {
      {"no display at all", {{"DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", std::nullopt}}, "none"},
      {"xcb named without a display", {{"DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", "xcb"}}, "offscreen"},
      {"xcb named, its display unreachable", {{"DISPLAY", ":64999"}, {"QT_QPA_PLATFORM", "xcb"}}, "offscreen"},
      {"wayland named without a compositor",
       {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", "wayland-64999"}, {"QT_QPA_PLATFORM", "wayland"}}, "offscreen"},
      {"a platform that does not exist", {{"QT_QPA_PLATFORM", "nosuchplatform"}}, "offscreen"},
      {"minimal named by the host", {{"QT_QPA_PLATFORM", "minimal"}}, "minimal"},
  };
  for (const auto& row : rows) {
    testing::EnvChanges env = row.env;
    env.try_emplace("WAYLAND_DISPLAY", std::nullopt);
    const testing::ChildResult child = testing::RunTestInChild(kTest, env);
    const bool reported = child.output.find("Программа:\tСклад") != std::string::npos &&
                          child.output.find("  --> [53] Нет файла") != std::string::npos;
    EXPECT_TRUE(child.exit_code == 0 && reported && child.output.find(unshown + row.platform + "\n") != std::string::npos)
        << row.what << "\n" << child.output;
  }
}

}  // namespace
}  // namespace tsruntime
