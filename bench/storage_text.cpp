// clsZKStorage.ToString then ToObject beside memcpy of the same bytes.
//
// A tree of a million items (1,000 nodes of 1,000 items: strings, Longs, Doubles and
// dates, three levels deep) is written to its text and read back into a new tree in
// every iteration; the peer copies the text's bytes twice, once per direction. MB/s
// counts the text's bytes (two per character) once per direction; "library / peer
// time" is the ratio. The chains of nodes show that the writer and reader stay linear
// however deep the tree: MB/s does not fall as the depth grows tenfold.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "string_peer_ratio.h"
#include "tsruntime/clsZKStorage.h"

namespace {

using namespace tsruntime;

Ref<clsZKStorage> MillionItemTree() {
  auto root = New<clsZKStorage>();
  root->LetName(u"root");
  for (int group = 0; group < 10; ++group) {
    auto middle = New<clsZKStorage>();
    middle->LetName(u"group");
    for (int n = 0; n < 100; ++n) {
      auto leaf = New<clsZKStorage>();
      leaf->LetName(u"leaf");
      auto items = leaf->Items();
      for (int i = 0; i < 250; ++i) {
        items->Add(Variant(String(u"value text ") + FromAscii(std::to_string(i))));
        items->Add(Variant(int32_t{group * 1000000 + n * 1000 + i}));
        items->Add(Variant(i * 0.125));
        items->Add(Variant(Date{45000.5 + i}));
      }
      middle->Nodes()->Add(leaf);
    }
    root->Nodes()->Add(middle);
  }
  return root;
}

Ref<clsZKStorage> Chain(int depth) {
  auto top = New<clsZKStorage>();
  auto bottom = top;
  for (int i = 0; i < depth; ++i) {
    auto next = New<clsZKStorage>();
    next->LetName(u"level");
    next->Items()->Add(Variant(int32_t{i}));
    bottom->Nodes()->Add(next);
    bottom = next;
  }
  return top;
}

void RoundTrip(benchmark::State& state, const Ref<clsZKStorage>& tree) {
  bool failed = false;
  size_t chars = 0;
  for (auto _ : state) {
    const String text = tree->ToString(failed);
    auto copy = New<clsZKStorage>();
    if (failed || !copy->ToObject(text)) state.SkipWithError("the text did not read back");
    chars = text.size();
    benchmark::DoNotOptimize(copy.get());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * chars * 2 * 2));
  state.counters["text_MB"] = static_cast<double>(chars * 2) / 1e6;
  tree->Clear();
}

void Memcpy(benchmark::State& state, const Ref<clsZKStorage>& tree) {
  bool failed = false;
  const String text = tree->ToString(failed);
  std::vector<char16_t> there(text.size()), back(text.size());
  for (auto _ : state) {
    std::memcpy(there.data(), text.data(), text.size() * 2);
    benchmark::ClobberMemory();
    std::memcpy(back.data(), there.data(), text.size() * 2);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size() * 2 * 2));
  tree->Clear();
}

void ToStringThenToObject(benchmark::State& state, int which) {
  RoundTrip(state, which == 0 ? MillionItemTree() : Chain(which));
}
void MemcpyOfTheText(benchmark::State& state, int which) {
  Memcpy(state, which == 0 ? MillionItemTree() : Chain(which));
}

constexpr auto kMs = benchmark::kMillisecond;
BENCHMARK_CAPTURE(ToStringThenToObject, million_items/tsruntime, 0)->Unit(kMs);
BENCHMARK_CAPTURE(MemcpyOfTheText, million_items/peer, 0)->Unit(kMs);
BENCHMARK_CAPTURE(ToStringThenToObject, chain_10000/tsruntime, 10000)->Unit(kMs);
BENCHMARK_CAPTURE(MemcpyOfTheText, chain_10000/peer, 10000)->Unit(kMs);
BENCHMARK_CAPTURE(ToStringThenToObject, chain_100000/tsruntime, 100000)->Unit(kMs);
BENCHMARK_CAPTURE(MemcpyOfTheText, chain_100000/peer, 100000)->Unit(kMs);

}  // namespace

int main(int argc, char** argv) { return tsruntime_bench::RunWithPeerRatios(argc, argv); }
