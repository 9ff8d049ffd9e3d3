// clsZKmd5.DigestFileToHexStr beside md5sum on the same file.
//
// Reading the output: the benchmark's own time is the library's; "peer_s" is md5sum in
// the same iteration, "ratio" is library time / md5sum time, and MB/s is the library's.
// The digests are compared on every iteration.
//
// The file is 268,435,405 bytes (13 more than a multiple of 64, so its digest is the RFC
// 1321 one). That is close to the largest file the class can digest: its byte and bit
// counts are signed 32-bit, so any file over 268,435,456 bytes (a 1 GiB file included)
// fails with overflow (6) before it is read. The program checks that too.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tsruntime/clsZKmd5.h"

namespace {

using namespace tsruntime;
using Clock = std::chrono::steady_clock;

constexpr int64_t kFileSize = (int64_t{1} << 28) - 64 + 13;

std::filesystem::path Folder() {
  static const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      ("tsruntime-md5-bench-" + std::to_string(::getpid()));
  return folder;
}

std::string BigFile() { return (Folder() / "big.bin").string(); }

void WriteBigFile() {
  std::filesystem::create_directories(Folder());
  std::ofstream out(BigFile(), std::ios::binary);
  std::vector<char> chunk(1 << 20);
  uint32_t x = 1;
  for (int64_t left = kFileSize; left > 0;) {
    for (char& c : chunk) {
      x = x * 1103515245u + 12345u;
      c = static_cast<char>(x >> 16);
    }
    const auto n = static_cast<std::streamsize>(std::min<int64_t>(left, chunk.size()));
    out.write(chunk.data(), n);
    left -= n;
  }
}

std::string Md5sum(const std::string& file) {
  FILE* p = ::popen(("md5sum '" + file + "'").c_str(), "r");
  char hex[33] = {};
  if (p) {
    if (std::fread(hex, 1, 32, p) != 32) hex[0] = 0;
    ::pclose(p);
  }
  std::string digest(hex);
  for (char& c : digest) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return digest;
}

void BM_DigestFile(benchmark::State& state) {
  auto md5 = New<clsZKmd5>();
  const String file = FromUtf8(BigFile());
  double library = 0, peer = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    const std::string ours = ToUtf8(md5->DigestFileToHexStr(file));
    const double lib_s = std::chrono::duration<double>(Clock::now() - start).count();
    start = Clock::now();
    const std::string theirs = Md5sum(BigFile());
    peer += std::chrono::duration<double>(Clock::now() - start).count();
    library += lib_s;
    state.SetIterationTime(lib_s);
    if (ours != theirs) {
      state.SkipWithError(("digests differ: " + ours + " / md5sum " + theirs).c_str());
      return;
    }
  }
  state.SetBytesProcessed(state.iterations() * kFileSize);
  state.counters["peer_s"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = library / peer;
}
BENCHMARK(BM_DigestFile)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

// A 1 GiB file overflows the class's counters; a sparse file shows it without writing one.
bool OneGibFileOverflows() {
  const std::string sparse = (Folder() / "sparse-1gib.bin").string();
  { std::ofstream create(sparse); }
  if (::truncate(sparse.c_str(), int64_t{1} << 30) != 0) return false;
  try {
    New<clsZKmd5>()->DigestFileToHexStr(FromUtf8(sparse));
  } catch (const Error& e) {
    return e.number() == static_cast<int32_t>(RuntimeError::kOverflow);
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  WriteBigFile();
  std::cerr << "1 GiB file: "
            << (OneGibFileOverflows() ? "overflow (6), as the 32-bit counts require"
                                      : "UNEXPECTED: no overflow")
            << "\n";
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::filesystem::remove_all(Folder());
  return 0;
}
