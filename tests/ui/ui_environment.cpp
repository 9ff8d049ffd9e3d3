// Every ui test runs on Qt's offscreen platform, unless it is the child a test started
// under its own Xvfb (see x_server.h), which keeps the platform it was given.
#include <gtest/gtest.h>

#include <cstdlib>

#include "application.h"

namespace {

class OffscreenPlatform : public testing::Environment {
 public:
  void SetUp() override {
    if (!std::getenv("TSRUNTIME_TEST_XCB_CHILD")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Tests on other threads find the application that the main thread made.
    ASSERT_TRUE(tsruntime::ui_detail::EnsureApplication());
  }
};

[[maybe_unused]] testing::Environment* const platform =
    testing::AddGlobalTestEnvironment(new OffscreenPlatform);

}  // namespace
