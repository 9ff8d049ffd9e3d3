// Every ui test runs on one desktop (ui_support.h), with the application made before the
// first test. A child process that a test starts keeps the environment it was given and
// makes nothing itself.
#include <gtest/gtest.h>

#include "application.h"
#include "support/child_process.h"
#include "ui_support.h"
// X11's macros (Bool, Status) break Qt's headers: after them.
#include "support/xvfb_server.h"

namespace tsruntime::testing {
namespace {

XvfbServer* desktop = nullptr;

class RussianDesktop : public ::testing::Environment {
 public:
  void SetUp() override {
    if (InTestChild()) return;
    desktop = new XvfbServer(1024, 768, "us,ru", true);  // goes with the process
    ASSERT_TRUE(desktop->ready()) << "Xvfb or openbox did not start";
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LANG", "ru_RU.UTF-8", 1);
    for (const char* overriding : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) unsetenv(overriding);
    // Tests on other threads find the application that the main thread made.
    ASSERT_TRUE(ui_detail::EnsureApplication());
  }
};

[[maybe_unused]] ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new RussianDesktop);

}  // namespace

bool LockGroup(int group) { return desktop && desktop->LockGroup(group); }
void Chord(const std::vector<unsigned>& input_codes) {
  if (desktop) desktop->Chord(input_codes);
}
void MovePointer(unsigned long window, int x, int y) {
  if (desktop) desktop->MovePointer(window, x, y);
}
void Focus(unsigned long window) {
  if (desktop) desktop->Focus(window);
}

}  // namespace tsruntime::testing

// Libraries that keep memory for the life of a process, not the library's: fontconfig's
// caches once any window has shown text, and the session bus buffer of Qt's xcb platform.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\nleak:libdbus-1.so\n";
}
