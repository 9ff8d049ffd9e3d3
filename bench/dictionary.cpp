// clsZKDictionary beside std::map: a million random keys inserted in ascending order,
// then read back in order.
//
// The dictionary places each key by a binary search over positions (each probe a
// read by index) and inserts at a position; reading back is Key(i) and Data(i) for
// i = 0..n-1. The peer inserts the same keys into a std::map and iterates it. The
// counter "x_std_map" on each dictionary line is its processor time divided by the
// peer's: how many times slower the dictionary is than the standard ordered
// container. "add_s" and "read_s" split the dictionary's time between the phases.
#include <benchmark/benchmark.h>

#include <time.h>

#include <map>
#include <random>

#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKDictionary.h"

namespace {

using tsruntime::String;
using tsruntime::Variant;

constexpr int kKeys = 1'000'000;

const std::vector<String>& Keys() {
  static const std::vector<String> keys = [] {
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> letter(0, 51);
    std::vector<String> out(kKeys);
    for (String& k : out) {
      for (int i = 0; i < 12; ++i) {
        const int l = letter(rng);
        k += static_cast<char16_t>(l < 26 ? u'a' + l : u'A' + (l - 26));
      }
    }
    return out;
  }();
  return keys;
}

double peer_seconds = 0;  // one run of the std::map peer, for the ratio

// Processor time of the process: steadier than the wall clock on a shared machine.
double CpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

void StdMapInsertThenIterate(benchmark::State& state) {
  const auto& keys = Keys();
  double total = 0;
  for (auto _ : state) {
    const double start = CpuSeconds();
    std::map<String, Variant> m;
    for (int32_t i = 0; i < kKeys; ++i) m.emplace(keys[i], Variant(i));
    int64_t sum = 0;
    for (const auto& [k, v] : m) sum += static_cast<int64_t>(k.size()) + v.asLong();
    benchmark::DoNotOptimize(sum);
    total += (CpuSeconds() - start);
  }
  peer_seconds = total / static_cast<double>(state.iterations());
  state.SetItemsProcessed(state.iterations() * kKeys);
}

void DictionarySortedAddThenReadByIndex(benchmark::State& state) {
  tsruntime::ScopedLocale locale("en_US");
  const auto& keys = Keys();
  std::vector<Variant> key_args(keys.begin(), keys.end());
  double total = 0, adding = 0, reading = 0;
  for (auto _ : state) {
    const double start = CpuSeconds();
    auto d = tsruntime::New<tsruntime::clsZKDictionary>();
    d->LetSortMode(tsruntime::xcTS_DICT_SORT_ASC);
    d->LetCompareMode(static_cast<int32_t>(state.range(0)));
    for (int32_t i = 0; i < kKeys; ++i) d->Add(key_args[i], Variant(i));
    const double added = (CpuSeconds() - start);
    int64_t sum = 0;
    for (int32_t i = 0; i < d->Count(); ++i) {
      sum += static_cast<int64_t>(d->Key(Variant(i)).asString().size()) +
             d->Data(Variant(i)).asLong();
    }
    benchmark::DoNotOptimize(sum);
    const double all = (CpuSeconds() - start);
    total += all;
    adding += added;
    reading += all - added;
  }
  const auto n = static_cast<double>(state.iterations());
  state.counters["add_s"] = adding / n;
  state.counters["read_s"] = reading / n;
  if (peer_seconds > 0) state.counters["x_std_map"] = total / n / peer_seconds;
  state.SetItemsProcessed(state.iterations() * kKeys);
}

}  // namespace

BENCHMARK(StdMapInsertThenIterate)->Unit(benchmark::kMillisecond);
// Argument: CompareMode, 0 binary, 1 text (locale collation on every probe).
BENCHMARK(DictionarySortedAddThenReadByIndex)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
