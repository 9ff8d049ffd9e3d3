// clsZKFileSystem beside the standard library and the kernel:
//
//   DirScanFiles/tree100k   every file path of a generated tree of 100,000 files into a
//                           clsZKDictionary, beside std::filesystem::recursive_directory_
//                           iterator collecting the same paths into a vector;
//   BinaryRead/file256M     a 256 MB file into a byte array, beside one read(2) into one
//                           buffer of the file's size.
//
// The summary line of each case is the library's time divided by the peer's. Both sides
// of a case count what they found, and the program stops if the counts differ.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "string_peer_ratio.h"
#include "tsruntime/clsZKFileSystem.h"

namespace {

using namespace tsruntime;

constexpr int kFolders = 100, kFilesPerFolder = 1000;  // in two levels: 10 x 10 folders
constexpr int64_t kFileSize = int64_t{256} << 20;

const std::string& Scratch() {
  static const std::string folder = [] {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tsruntime-fs-bench-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) std::abort();
    std::atexit([] { std::filesystem::remove_all(Scratch()); });
    return pattern;
  }();
  return folder;
}

const std::string& Tree() {
  static const std::string root = [] {
    const std::string tree = Scratch() + "/tree";
    for (int f = 0; f < kFolders; ++f) {
      const std::string folder =
          tree + "/level-" + std::to_string(f / 10) + "/folder-" + std::to_string(f % 10);
      std::filesystem::create_directories(folder);
      for (int i = 0; i < kFilesPerFolder; ++i) {
        const int fd = ::open((folder + "/file-" + std::to_string(i) + ".dat").c_str(),
                              O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) std::abort();
        ::close(fd);
      }
    }
    return tree;
  }();
  return root;
}

const std::string& BigFile() {
  static const std::string file = [] {
    const std::string name = Scratch() + "/big.bin";
    std::ofstream out(name, std::ios::binary);
    std::vector<char> chunk(1 << 20);
    uint32_t x = 1;
    for (char& c : chunk) c = static_cast<char>((x = x * 1103515245u + 12345u) >> 16);
    for (int64_t left = kFileSize; left > 0; left -= static_cast<int64_t>(chunk.size())) {
      out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    }
    return name;
  }();
  return file;
}

void Check(benchmark::State& state, int64_t found, int64_t expected) {
  if (found != expected) state.SkipWithError("the two sides found different amounts");
}

void DirScanFiles(benchmark::State& state, bool library) {
  const std::string& tree = Tree();
  const String root = FromUtf8(tree);
  auto fs = New<clsZKFileSystem>();
  for (auto _ : state) {
    int64_t found = 0;
    if (library) {
      auto paths = New<clsZKDictionary>();
      fs->DirScanFiles(root, paths);
      found = paths->Count();
    } else {
      std::vector<std::string> paths;
      for (const auto& e : std::filesystem::recursive_directory_iterator(tree)) {
        if (!e.is_directory()) paths.push_back(e.path().string());
      }
      found = static_cast<int64_t>(paths.size());
    }
    Check(state, found, int64_t{kFolders} * kFilesPerFolder);
  }
}
BENCHMARK_CAPTURE(DirScanFiles, tree100k/tsruntime, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DirScanFiles, tree100k/peer, false)->Unit(benchmark::kMillisecond);

void BinaryRead(benchmark::State& state, bool library) {
  const std::string& file = BigFile();
  const String name = FromUtf8(file);
  auto fs = New<clsZKFileSystem>();
  for (auto _ : state) {
    int64_t found = 0;
    if (library) {
      SafeArray bytes(VarType::kByte);
      if (fs->BinaryRead(name, bytes)) found = static_cast<int64_t>(bytes.bytes().size());
    } else {
      const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
      struct stat info;
      ::fstat(fd, &info);
      const std::unique_ptr<uint8_t[]> buffer(new uint8_t[static_cast<size_t>(info.st_size)]);
      for (ssize_t n; found < info.st_size && (n = ::read(fd, buffer.get() + found,
                                                          info.st_size - found)) > 0;) {
        found += n;
      }
      ::close(fd);
    }
    Check(state, found, kFileSize);
  }
  state.SetBytesProcessed(state.iterations() * kFileSize);
}
// A read takes about a second here: a few of them make the ratio steadier than one.
BENCHMARK_CAPTURE(BinaryRead, file256M/tsruntime, true)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK_CAPTURE(BinaryRead, file256M/peer, false)->Unit(benchmark::kMillisecond)->MinTime(3);

}  // namespace

int main(int argc, char** argv) { return tsruntime_bench::RunWithPeerRatios(argc, argv); }
