// clsZKArray's SortQuick and SortBubble on a million strings, each beside std::sort on
// the same strings.
//
// Reading the output: the benchmark's own time is the library's; "peer_s" is std::sort
// on an identical copy in the same iteration, and "ratio" is library time / peer time.
// Text compare runs in the ru_RU locale; its peer sorts on collation keys computed once
// per string (the key computation is timed with it), the fastest way the standard
// library has to sort by a locale's order.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKArray.h"

namespace {

using namespace tsruntime;
using Clock = std::chrono::steady_clock;

std::vector<String> RandomStrings(size_t n) {
  static const String letters =
      u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJабвгдеёжзийклмнопрАБВГДЕЁЖЗ";
  std::mt19937 rng(42);
  std::vector<String> out(n);
  for (String& s : out) {
    s.resize(6 + rng() % 10);
    for (char16_t& c : s) c = letters[rng() % letters.size()];
  }
  return out;
}

const std::vector<String>& Input() {
  static const std::vector<String> strings = RandomStrings(1'000'000);
  return strings;
}

double Seconds(Clock::time_point from) {
  return std::chrono::duration<double>(Clock::now() - from).count();
}

void StdSort(std::vector<String>& v, int32_t mode) {
  if (mode == vbBinaryCompare) {
    std::sort(v.begin(), v.end());
    return;
  }
  std::vector<std::string> keys(v.size());
  for (size_t i = 0; i < v.size(); ++i) keys[i] = TextSortKey(v[i]);
  std::vector<size_t> order(v.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return keys[a] < keys[b]; });
  std::vector<String> sorted(v.size());
  for (size_t i = 0; i < order.size(); ++i) sorted[i] = std::move(v[order[i]]);
  v = std::move(sorted);
}

enum class Which { kQuick, kBubble };

void BM_Sort(benchmark::State& state, Which which, int32_t mode) {
  ScopedLocale ru("ru_RU");
  auto ar = New<clsZKArray>();
  const SafeArray original = SafeArray::FromStrings(Input());
  double library = 0, peer = 0;
  for (auto _ : state) {
    SafeArray a = original;
    std::vector<String> v = Input();
    auto start = Clock::now();
    const bool ok = which == Which::kQuick
                        ? ar->SortQuick(a, 0, static_cast<int32_t>(Input().size()) - 1,
                                        Variant::Missing(), false, mode)
                        : ar->SortBubble(a, Variant::Missing(), false, mode);
    const double lib_s = Seconds(start);
    start = Clock::now();
    StdSort(v, mode);
    const double peer_s = Seconds(start);
    state.SetIterationTime(lib_s);
    library += lib_s;
    peer += peer_s;
    // Both orders must agree on the keys (equal keys may differ in order).
    if (!ok || CompareStrings(a.at(0).asString(), v.front(), mode) != 0 ||
        CompareStrings(a.at(static_cast<int32_t>(v.size()) - 1).asString(), v.back(), mode) != 0) {
      state.SkipWithError("the sorts disagree");
      return;
    }
  }
  state.counters["peer_s"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = library / peer;
}

BENCHMARK_CAPTURE(BM_Sort, SortQuick_binary, Which::kQuick, vbBinaryCompare)
    ->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_CAPTURE(BM_Sort, SortQuick_text, Which::kQuick, vbTextCompare)
    ->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK_CAPTURE(BM_Sort, SortBubble_binary, Which::kBubble, vbBinaryCompare)
    ->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(BM_Sort, SortBubble_text, Which::kBubble, vbTextCompare)
    ->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
