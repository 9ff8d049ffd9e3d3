// clsZKString::InstrRight beside std::u16string::rfind, on ten million characters.
//
// Both look for the last occurrence; the only one sits near the start, so the whole text
// is read. "Repetitive" is the input that makes a naive backward search compare the
// whole pattern at every position. The ratio line at the end reads: InstrRight's time
// divided by rfind's.
#include <random>

#include "string_peer_ratio.h"
#include "tsruntime/clsZKString.h"

namespace {

using tsruntime::String;

constexpr size_t kLength = 10'000'000;

struct Input {
  String text, search;
};

const Input& Prose() {
  static const Input input = [] {
    std::mt19937 rng(3);
    const std::u16string_view letters = u"abcdefghijklmnopqrstuvwxyz ";
    Input in{String(kLength, u' '), u"needle"};
    for (char16_t& c : in.text) c = letters[rng() % letters.size()];
    in.text.replace(100, in.search.size(), in.search);
    return in;
  }();
  return input;
}

const Input& Repetitive() {
  static const Input input = [] {
    Input in{String(kLength, u'a'), String(31, u'a') + u"b"};
    in.text.replace(100, in.search.size(), in.search);
    return in;
  }();
  return input;
}

void Library(benchmark::State& state, const Input& (*input)()) {
  const Input& in = input();
  auto s = tsruntime::New<tsruntime::clsZKString>();
  if (s->InstrRight(in.text, in.search) != static_cast<int32_t>(in.text.rfind(in.search) + 1)) {
    state.SkipWithError("results differ from the peer's");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(s->InstrRight(in.text, in.search));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * in.text.size()));
}

void Peer(benchmark::State& state, const Input& (*input)()) {
  const Input& in = input();
  for (auto _ : state) benchmark::DoNotOptimize(in.text.rfind(in.search));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * in.text.size()));
}

BENCHMARK_CAPTURE(Library, Prose/tsruntime, Prose)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Peer, Prose/peer, Prose)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Library, Repetitive/tsruntime, Repetitive)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Peer, Repetitive/peer, Repetitive)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) { return tsruntime_bench::RunWithPeerRatios(argc, argv); }
