// clsZKDictionary beside std::map: a million random keys inserted in ascending order,
// then read back in order.
//
// The dictionary places each key by a binary search over positions (each probe a
// read by index) and inserts at a position; reading back is Key(i) and Data(i) for
// i = 0..n-1. The peer inserts the same keys into a std::map and iterates it: with
// binary compare a plain std::map, with text compare one ordered by the same collator
// (CompareStrings in text mode, the thread locale's ICU collator). The counter
// "x_std_map" on each dictionary line is its processor time divided by the peer's of
// the same compare mode: how many times slower the dictionary is than the standard
// ordered container. "add_s" and "read_s" split the dictionary's time between the
// phases.
#include <benchmark/benchmark.h>

#include <time.h>

#include <map>
#include <random>

#include "tsruntime/automation/compare.h"
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

double peer_seconds[2] = {};  // a run of the std::map peer per compare mode, for the ratio

// Processor time of the process: steadier than the wall clock on a shared machine.
double CpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Orders keys as the dictionary's text compare does.
struct CollatorLess {
  bool operator()(const String& a, const String& b) const {
    return tsruntime::CompareStrings(a, b, tsruntime::vbTextCompare) < 0;
  }
};

template <class Map>
double InsertThenIterate(const std::vector<String>& keys) {
  const double start = CpuSeconds();
  Map m;
  for (int32_t i = 0; i < kKeys; ++i) m.emplace(keys[i], Variant(i));
  int64_t sum = 0;
  for (const auto& [k, v] : m) sum += static_cast<int64_t>(k.size()) + v.asLong();
  benchmark::DoNotOptimize(sum);
  return CpuSeconds() - start;
}

void StdMapInsertThenIterate(benchmark::State& state) {
  tsruntime::ScopedLocale locale("en_US");
  const auto& keys = Keys();
  const auto mode = static_cast<int>(state.range(0));
  double total = 0;
  for (auto _ : state) {
    total += mode == 0 ? InsertThenIterate<std::map<String, Variant>>(keys)
                       : InsertThenIterate<std::map<String, Variant, CollatorLess>>(keys);
  }
  peer_seconds[mode] = total / static_cast<double>(state.iterations());
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
  const double peer = peer_seconds[state.range(0) == 0 ? 0 : 1];
  if (peer > 0) state.counters["x_std_map"] = total / n / peer;
  state.SetItemsProcessed(state.iterations() * kKeys);
}

}  // namespace

// Argument: the compare mode the peer orders by, 0 binary, 1 text.
BENCHMARK(StdMapInsertThenIterate)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
// Argument: CompareMode, 0 binary, 1 text (locale collation on every probe).
BENCHMARK(DictionarySortedAddThenReadByIndex)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
