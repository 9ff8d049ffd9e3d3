// clsZKStorageItems.Add beside std::vector::push_back of the same values, from ten
// thousand to a million calls.
//
// Add keeps each value as its text beside its type code, so it does more per call than
// the peer; what the sizes show is growth: the time per item stays flat and the ratio
// stays the same from 10^4 to 10^6 calls, as it does for a list that grows geometrically.
#include <string>
#include <vector>

#include "string_peer_ratio.h"
#include "tsruntime/clsZKStorage.h"

namespace {

using tsruntime::Variant;

std::vector<Variant> Values(int64_t n) {
  std::vector<Variant> values;
  values.reserve(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) {
    const auto k = static_cast<int32_t>(i);
    values.push_back(i % 2 ? Variant(k) : Variant(tsruntime::String(u"item")));
  }
  return values;
}

void Add(benchmark::State& state, int64_t n, bool library) {
  const std::vector<Variant> values = Values(n);
  for (auto _ : state) {
    if (library) {
      auto items = tsruntime::New<tsruntime::clsZKStorageItems>();
      for (const Variant& v : values) items->Add(v);
      benchmark::DoNotOptimize(items->Count());
    } else {
      std::vector<Variant> list;
      for (const Variant& v : values) list.push_back(v);
      benchmark::DoNotOptimize(list.data());
    }
  }
  state.SetItemsProcessed(state.iterations() * n);
}

}  // namespace

int main(int argc, char** argv) {
  for (const int64_t n : {10'000, 100'000, 1'000'000}) {
    for (const bool library : {true, false}) {
      const std::string name =
          "Add/" + std::to_string(n) + "_items/" + (library ? "tsruntime" : "peer");
      benchmark::RegisterBenchmark(name.c_str(), Add, n, library)
          ->Unit(benchmark::kMillisecond);
    }
  }
  return tsruntime_bench::RunWithPeerRatios(argc, argv);
}
