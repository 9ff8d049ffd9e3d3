// Where the runtime finds libtszlib.so: tsrt runs against copies of the library laid out
// with and without the module, and the runtime itself never links zlib.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

// The first line tsrt prints for a CompressData call, run with `library_path` as the
// loader's search path.
std::string CompressThrough(const std::string& library_path) {
  const std::string command = "LD_LIBRARY_PATH='" + library_path + "' '" TSRT_PATH
                              "' call clsZKMem CompressData 'Array(1, 2, 3) As Byte' 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return "cannot run tsrt";
  char line[256] = {};
  const bool read = std::fgets(line, sizeof line, pipe) != nullptr;
  pclose(pipe);
  std::string text = read ? line : "";
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

TEST(CompressionModule, IsFoundBesideTheLibraryThenOnTheLoadersPath) {
  const fs::path root = fs::temp_directory_path() / ("tszlib-test-" + std::to_string(getpid()));
  const fs::path lib = root / "lib", other = root / "other", alone = root / "alone",
                 decoy = root / "decoy";
  for (const fs::path& d : {lib, other, alone, decoy}) fs::create_directories(d);
  // A library of that name without the two entry points: zlib itself.
  fs::copy_file(ZLIB_LIBRARY_PATH, decoy / "libtszlib.so");
  for (const fs::path& d : {lib, alone}) {
    fs::copy_file(TSRUNTIME_LIBRARY_PATH, d / TSRUNTIME_LIBRARY_SONAME);
  }
  fs::copy_file(TSZLIB_PATH, lib / "libtszlib.so");
  fs::copy_file(TSZLIB_PATH, other / "libtszlib.so");

  struct Row {
    const char* what;
    std::string path;
    std::string printed;
  } rows[] = {
      {"the module beside the library", lib.string(), "True"},
      {"no module anywhere: False, no error", alone.string(), "False"},
      {"the module elsewhere on the loader's path", alone.string() + ":" + other.string(), "True"},
      {"beside the library comes before the loader's path", decoy.string() + ":" + lib.string(),
       "True"},
      {"a module without the entry points does not load", alone.string() + ":" + decoy.string(),
       "False"},
  };
  for (const Row& r : rows) EXPECT_EQ(CompressThrough(r.path), r.printed) << r.what;
  fs::remove_all(root);
}

TEST(CompressionModule, TheRuntimeDoesNotLinkZlib) {
  const std::string command = "ldd '" TSRUNTIME_LIBRARY_PATH "'";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_TRUE(pipe);
  std::string listing;
  char buffer[512];
  while (std::fgets(buffer, sizeof buffer, pipe)) listing += buffer;
  pclose(pipe);
  EXPECT_NE(listing.find("libc.so"), std::string::npos) << listing;
  EXPECT_EQ(listing.find("libz.so"), std::string::npos) << listing;
}

}  // namespace
