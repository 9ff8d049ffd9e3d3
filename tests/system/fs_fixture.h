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

#include "support/outcome.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime::testing {

using Bytes = std::vector<uint8_t>;
inline std::string Text(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }
inline Bytes ToBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

class FsTest : public ::testing::Test {
 protected:
  FsTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tsrt-fs-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) ADD_FAILURE() << "no scratch folder";
    root_ = pattern;
  }
  ~FsTest() override { std::filesystem::remove_all(root_); }

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
  bool Exists(const std::string& relative) const {
    struct stat info;
    return ::lstat(Native(relative).c_str(), &info) == 0;
  }
  mode_t Mode(const std::string& relative) const {
    struct stat info;
    return ::stat(Native(relative).c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
  }
  // Names in a folder of the scratch folder: sorted, or in the kernel's listing order.
  std::vector<std::string> Listing(const std::string& relative = "", bool sorted = true) const {
    std::vector<std::string> names;
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
      const auto replace = [&](const std::string& from, const std::string& to) {
        for (size_t at; (at = text.find(from)) != std::string::npos;) {
          text.replace(at, from.size(), to);
        }
      };
      replace("ZKRuntimeLib.clsZKFileSystem.", "");
      replace("\r\n", "|");
      replace(root_, "~");
      return text;
    }
  }

  Ref<clsZKFileSystem> fs_ = New<clsZKFileSystem>();

 private:
  std::string root_;
};

// A small file system of its own for a test, unmounted when the test ends; nothing where
// the process may not mount one.
class SmallDisk {
 public:
  SmallDisk(const std::string& folder, const char* size) : folder_(folder) {
    std::filesystem::create_directories(folder);
    mounted_ = ::mount("tmpfs", folder.c_str(), "tmpfs", 0, (std::string("size=") + size).c_str()) == 0;
  }
  ~SmallDisk() {
    if (mounted_) ::umount2(folder_.c_str(), MNT_DETACH);
  }
  bool mounted() const { return mounted_; }

 private:
  std::string folder_;
  bool mounted_ = false;
};

}  // namespace tsruntime::testing
