// clsZKMem.CompressData and DecompressData beside zlib's own compress and uncompress on
// the same 100 MiB of mixed data, and the peak memory of a whole round trip each way.
//
// Reading the output: after the table, "library / peer time" per case (aim: at most
// 1.05). Before it, the peak resident memory of a child process that makes the data,
// keeps it, and round-trips a copy, as a multiple of the data size (aim: under 4).
//
// 100 MiB rather than 100 MB: DecompressData sizes its buffer from the four bytes that
// start one byte before the stored length, which for 100,000,000 bytes (bit 23 of the
// length set) reads as negative and fails by design; 104,857,600 bytes reads back.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "string_peer_ratio.h"
#include "support/mixed_bytes.h"
#include "tsruntime/clsZKMem.h"

namespace {

using namespace tsruntime;

constexpr size_t kSize = size_t{100} << 20;

const std::vector<uint8_t>& Data() {
  static const std::vector<uint8_t> data = testing::MixedBytes(kSize, 7);
  return data;
}

const SafeArray& Block() {
  static const SafeArray block = [] {
    SafeArray b = SafeArray::FromBytes(Data());
    if (!New<clsZKMem>()->CompressData(b)) std::abort();
    return b;
  }();
  return block;
}

void Compress_Library(benchmark::State& state) {
  auto mem = New<clsZKMem>();
  for (auto _ : state) {
    state.PauseTiming();
    SafeArray a = SafeArray::FromBytes(Data());
    state.ResumeTiming();
    if (!mem->CompressData(a)) state.SkipWithError("CompressData failed");
    benchmark::DoNotOptimize(a);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void Compress_Zlib(benchmark::State& state) {
  for (auto _ : state) {
    uLongf length = compressBound(kSize);
    std::unique_ptr<uint8_t[]> out(new uint8_t[length]);
    if (compress(out.get(), &length, Data().data(), kSize) != Z_OK) state.SkipWithError("zlib");
    benchmark::DoNotOptimize(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void Decompress_Library(benchmark::State& state) {
  auto mem = New<clsZKMem>();
  for (auto _ : state) {
    state.PauseTiming();
    SafeArray a = Block();
    state.ResumeTiming();
    if (!mem->DecompressData(a)) state.SkipWithError("DecompressData failed");
    benchmark::DoNotOptimize(a);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void Decompress_Zlib(benchmark::State& state) {
  const std::vector<uint8_t>& block = Block().bytes();
  for (auto _ : state) {
    uLongf length = kSize;
    std::unique_ptr<uint8_t[]> out(new uint8_t[length]);
    if (uncompress(out.get(), &length, block.data(), block.size() - 4) != Z_OK) {
      state.SkipWithError("zlib");
    }
    benchmark::DoNotOptimize(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

BENCHMARK(Compress_Library)->Name("Mem/Compress100MiB/tsruntime")->Unit(benchmark::kMillisecond);
BENCHMARK(Compress_Zlib)->Name("Mem/Compress100MiB/peer")->Unit(benchmark::kMillisecond);
BENCHMARK(Decompress_Library)->Name("Mem/Decompress100MiB/tsruntime")->Unit(benchmark::kMillisecond);
BENCHMARK(Decompress_Zlib)->Name("Mem/Decompress100MiB/peer")->Unit(benchmark::kMillisecond);

// Peak resident memory, in bytes, of a child that runs `round_trip` on fresh data and
// checks the result; 0 when the round trip failed.
double PeakOfRoundTrip(const std::function<bool(const std::vector<uint8_t>&)>& round_trip) {
  const pid_t child = fork();
  if (child == 0) _exit(round_trip(testing::MixedBytes(kSize, 7)) ? 0 : 1);
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status)) {
    return 0;
  }
  return usage.ru_maxrss * 1024.0;
}

void ReportPeakMemory() {
  const double library = PeakOfRoundTrip([](const std::vector<uint8_t>& data) {
    auto mem = New<clsZKMem>();
    SafeArray a = SafeArray::FromBytes(data);
    return mem->CompressData(a) && mem->DecompressData(a) && a.bytes() == data;
  });
  const double peer = PeakOfRoundTrip([](const std::vector<uint8_t>& data) {
    uLongf packed = compressBound(data.size());
    std::unique_ptr<uint8_t[]> block(new uint8_t[packed]);
    if (compress(block.get(), &packed, data.data(), data.size()) != Z_OK) return false;
    uLongf length = data.size();
    std::unique_ptr<uint8_t[]> out(new uint8_t[length]);
    return uncompress(out.get(), &length, block.get(), packed) == Z_OK && length == data.size() &&
           std::memcmp(out.get(), data.data(), length) == 0;
  });
  std::printf("peak memory of a 100 MiB round trip, data kept by the caller included:\n");
  std::printf("  tsruntime %7.1f MiB = %.2f x data size\n", library / (1 << 20), library / kSize);
  std::printf("  zlib      %7.1f MiB = %.2f x data size\n", peer / (1 << 20), peer / kSize);
}

}  // namespace

int main(int argc, char** argv) {
  ReportPeakMemory();
  return tsruntime_bench::RunWithPeerRatios(argc, argv);
}
