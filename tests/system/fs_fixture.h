// A scratch folder per test, raw file access that bypasses the library (so that what it
// wrote is checked by other means), and outcomes as short comparable texts.
#pragma once

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/outcome.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime::testing {

using Bytes = std::vector<uint8_t>;
using Names = std::vector<std::string>;
inline std::string Text(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }
inline Bytes ToBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }
inline SafeArray ByteArray(const std::string& text) { return SafeArray::FromBytes(ToBytes(text)); }

// The registry store lives in the scratch folder too, so no test sees another's keys.
class FsTest : public ::testing::Test {
 protected:
  FsTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tsrt-fs-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) ADD_FAILURE() << "no scratch folder";
    root_ = pattern;
    ::setenv("TSRUNTIME_REGISTRY_DIR", root_.c_str(), 1);
  }
  // Tests may change the current folder; it is put back.
  ~FsTest() override {
    ::unsetenv("TSRUNTIME_REGISTRY_DIR");
    std::filesystem::current_path(cwd_);
    for (const std::string& folder : mounts_) ::umount2(folder.c_str(), MNT_DETACH);
    std::filesystem::remove_all(root_);
  }

  // A path in the scratch folder, in the kernel's form and as a String.
  std::string Native(const std::string& relative = "") const {
    return relative.empty() ? root_ : root_ + "/" + relative;
  }
  String Path(const std::string& relative = "") const { return FromUtf8(Native(relative)); }

  void Put(const std::string& relative, const std::string& content, mode_t mode = 0644) const {
    std::filesystem::create_directories(std::filesystem::path(Native(relative)).parent_path());
    std::ofstream(Native(relative), std::ios::binary) << content;
    ::chmod(Native(relative).c_str(), mode);
  }
  void MakeFolder(const std::string& relative) const {
    std::filesystem::create_directories(Native(relative));
  }
  void Link(const std::string& relative, const std::string& target) const {
    std::filesystem::create_symlink(target, Native(relative));
  }
  std::string Get(const std::string& relative) const {
    std::ifstream in(Native(relative), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  // The entry itself, not what a link names; all zero when there is none.
  struct stat Info(const std::string& relative) const {
    struct stat info {};
    ::lstat(Native(relative).c_str(), &info);
    return info;
  }
  bool Exists(const std::string& relative) const { return Info(relative).st_nlink > 0; }
  mode_t Mode(const std::string& relative) const { return Info(relative).st_mode & 07777; }
  // Names in a folder of the scratch folder: sorted, or in the kernel's listing order.
  Names Listing(const std::string& relative = "", bool sorted = true) const {
    Names names;
    for (const auto& e : std::filesystem::directory_iterator(Native(relative))) {
      names.push_back(e.path().filename().string());
    }
    if (sorted) std::sort(names.begin(), names.end());
    return names;
  }

  // "True" or "False", or what the call raised: "number source-operation: description",
  // with CR LF as "|" and the scratch folder as "~".
  template <class F>
  std::string Run(F&& call) {
    try {
      return call() ? "True" : "False";
    } catch (const Error& e) {
      std::string text = std::to_string(e.number()) + " " + U8(e.source()) + ": " +
                         U8(e.description()) + (e.helpFile().empty() ? "" : " with help");
      for (const auto& [from, to] : {std::pair<std::string, std::string>{"ZKRuntimeLib.clsZKFileSystem.", ""},
                                     {"\r\n", "|"}, {root_, "~"}}) {
        for (size_t at; (at = text.find(from)) != std::string::npos;) text.replace(at, from.size(), to);
      }
      return text;
    }
  }

  // Runs the current test again as the throwaway user, with `env`; it must pass there.
  static void PassAsOrdinaryUser(const EnvChanges& env) {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    const ChildResult child = RunTestInChild(std::string(test->test_suite_name()) + "." + test->name(),
                                             env, ThrowawayUid());
    EXPECT_EQ(child.exit_code, 0) << child.output;
    EXPECT_NE(child.output.find("[  PASSED  ] 1 test"), std::string::npos) << child.output;
  }

  // A small file system of its own at `relative`, unmounted when the test ends; false
  // where the process may not mount one.
  bool MountSmallDisk(const std::string& relative, const char* size) {
    MakeFolder(relative);
    if (::mount("tmpfs", Native(relative).c_str(), "tmpfs", 0, (std::string("size=") + size).c_str())) return false;
    mounts_.push_back(Native(relative));
    return true;
  }

  Ref<clsZKFileSystem> fs_ = New<clsZKFileSystem>();

 private:
  std::string root_;
  std::vector<std::string> mounts_;
  std::filesystem::path cwd_ = std::filesystem::current_path();
};

}  // namespace tsruntime::testing
