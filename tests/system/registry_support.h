// Test helpers for the registry: a store of its own in a scratch folder per test.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "tsruntime/clsZKRegistry.h"

namespace tsruntime::testing {

// Moves the whole store into a new scratch folder for the test, and back afterwards.
class RegistryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/tsrt-registry-XXXXXX";
    dir_ = mkdtemp(pattern);
    setenv("TSRUNTIME_REGISTRY_DIR", dir_.c_str(), 1);
  }
  void TearDown() override {
    unsetenv("TSRUNTIME_REGISTRY_DIR");
    std::filesystem::remove_all(dir_);
  }
  const std::string& dir() const { return dir_; }

  Ref<clsZKRegistry> reg = New<clsZKRegistry>();

 private:
  std::string dir_;
};

}  // namespace tsruntime::testing
