// Every ui test runs on the desktop of desktop.h, the application made before the first
// test. A child process that a test starts (support/child_process.h) keeps the
// environment it was given and makes nothing itself.
#include <gtest/gtest.h>

#include <cstdlib>

#include "application.h"
#include "desktop.h"
#include "support/child_process.h"

namespace tsruntime::testing {
namespace {

Desktop* desktop = nullptr;

class RussianDesktop : public ::testing::Environment {
 public:
  void SetUp() override {
    if (InTestChild()) return;
    desktop = new Desktop;
    ASSERT_TRUE(desktop->ready()) << "Xvfb or openbox did not start";
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LANG", "ru_RU.UTF-8", 1);
    for (const char* overriding : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) unsetenv(overriding);
    // Tests on other threads find the application that the main thread made.
    ASSERT_TRUE(ui_detail::EnsureApplication());
  }
  // The server and the window manager go with the process; the application outlives
  // every test and still holds its connection.
};

[[maybe_unused]] ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new RussianDesktop);

}  // namespace

Desktop* TheDesktop() { return desktop; }

}  // namespace tsruntime::testing
