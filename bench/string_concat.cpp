// Building a 100 MB string (50 million UTF-16 code units) from short lines with
// clsZKStringConcat, beside std::u16string::append of the same lines.
//
// Reading the output: the benchmark's own time is the library's (every Add plus the
// final GetStr); "peer_s" is the appending in the same iteration and "ratio" is library
// time / peer time; "ratio_adds" leaves out GetStr's copy of the finished text. Both run
// with the default AllocSize of 1000 characters, which would mean 50,000 regrowths if the
// buffer really grew one block at a time.
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

#include "tsruntime/clsZKStringConcat.h"

namespace {

using namespace tsruntime;
using Clock = std::chrono::steady_clock;

constexpr size_t kTarget = 50'000'000;

// Lines of 20 to 59 characters, like a report being put together.
const std::vector<String>& Lines() {
  static const std::vector<String> lines = [] {
    std::vector<String> out;
    for (int i = 0; i < 1000; ++i) {
      out.push_back(u"Строка " + FromAscii(std::to_string(i)) + u": " +
                    String(static_cast<size_t>(10 + i % 40), u'ж') + u"\r\n");
    }
    return out;
  }();
  return lines;
}

void BM_BuildString(benchmark::State& state) {
  double library = 0, adds = 0, peer = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    auto sc = New<clsZKStringConcat>();
    for (size_t i = 0; static_cast<size_t>(sc->CharsUsed()) < kTarget; ++i) {
      sc->Add(Lines()[i % Lines().size()]);
    }
    adds += std::chrono::duration<double>(Clock::now() - start).count();
    const String built = sc->GetStr();
    const double lib_s = std::chrono::duration<double>(Clock::now() - start).count();

    start = Clock::now();
    String plain;
    for (size_t i = 0; plain.size() < kTarget; ++i) plain.append(Lines()[i % Lines().size()]);
    const double peer_s = std::chrono::duration<double>(Clock::now() - start).count();

    library += lib_s;
    peer += peer_s;
    state.SetIterationTime(lib_s);
    if (built != plain) {
      state.SkipWithError("the strings differ");
      return;
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kTarget * 2));
  state.counters["peer_s"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = library / peer;
  state.counters["ratio_adds"] = adds / peer;
}
BENCHMARK(BM_BuildString)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
