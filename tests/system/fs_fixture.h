// A scratch folder per test, and raw file access that does not go through the library,
// so that what the library wrote is checked by other means.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/outcome.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime::testing {

using Bytes = std::vector<uint8_t>;

class FsTest : public ::testing::Test {
 protected:
  FsTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tsrt-fs-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) ADD_FAILURE() << "no scratch folder";
    root_ = pattern;
  }
  ~FsTest() override {
    std::error_code ignored;
    // Read-only folders would stop an unprivileged removal.
    for (auto it = std::filesystem::recursive_directory_iterator(root_, ignored);
         it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
      if (!it->is_symlink()) ::chmod(it->path().c_str(), 0755);
    }
    std::filesystem::remove_all(root_, ignored);
  }

  // The scratch folder, or a path inside it, in the kernel's form and as a String.
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
  // Names in the scratch folder (or a folder in it), sorted.
  std::vector<std::string> Listing(const std::string& relative = "") const {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(Native(relative))) {
      names.push_back(e.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  Ref<clsZKFileSystem> fs_ = New<clsZKFileSystem>();

 private:
  std::string root_;
};

inline std::string Text(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }
inline Bytes ToBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

}  // namespace tsruntime::testing
