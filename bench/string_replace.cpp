// clsZKString::Replace beside a single-pass replace built from the standard library.
//
// The text is ten million characters holding a million occurrences. Replace keeps its
// re-scan after every replacement, which the peer does not do; on these inputs the
// re-scan finds nothing new, so both give the same text (checked before timing). For
// binary compare the peer finds occurrences with std::u16string_view::find; for text
// compare it finds them with std::search under a case fold of each character (ASCII
// inline, TextFold beyond). The ratio line at the end reads: Replace's time divided by
// the peer's.
#include <algorithm>
#include <random>

#include "string_peer_ratio.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/clsZKString.h"

namespace {

using tsruntime::String;
using tsruntime::StringView;

constexpr size_t kBlocks = 1'000'000;

// Blocks of eight letters that never form "fg", each followed by "fg".
const String& Text() {
  static const String text = [] {
    std::mt19937 rng(1);
    const StringView letters = u"abcdehijklmnopqrs ";
    String t;
    t.reserve(kBlocks * 10);
    for (size_t i = 0; i < kBlocks; ++i) {
      for (int k = 0; k < 8; ++k) t += letters[rng() % letters.size()];
      t += u"fg";
    }
    return t;
  }();
  return text;
}

char16_t Fold(char16_t c) {
  if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
  return tsruntime::TextFold(c);
}

// Each occurrence replaced once, found with binary or case-folded comparison.
String SinglePass(StringView text, StringView search, StringView replacement, bool fold) {
  String out;
  out.reserve(text.size());
  auto next = [&](size_t from) {
    if (!fold) return text.find(search, from);
    const auto at = std::search(text.begin() + static_cast<ptrdiff_t>(from), text.end(),
                                search.begin(), search.end(),
                                [](char16_t a, char16_t b) { return Fold(a) == Fold(b); });
    return at == text.end() ? StringView::npos : static_cast<size_t>(at - text.begin());
  };
  size_t from = 0;
  for (size_t at; (at = next(from)) != StringView::npos; from = at + search.size()) {
    out.append(text.substr(from, at - from));
    out.append(replacement);
  }
  out.append(text.substr(from));
  return out;
}

void Library(benchmark::State& state, StringView search, StringView replacement, int32_t mode) {
  auto s = tsruntime::New<tsruntime::clsZKString>();
  const String search_text(search), replacement_text(replacement);
  if (s->Replace(Text(), search_text, replacement_text, mode) !=
      SinglePass(Text(), search, replacement, mode != 0)) {
    state.SkipWithError("results differ from the peer's");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(s->Replace(Text(), search_text, replacement_text, mode));
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * Text().size()));
}

void Peer(benchmark::State& state, StringView search, StringView replacement, bool fold) {
  for (auto _ : state) benchmark::DoNotOptimize(SinglePass(Text(), search, replacement, fold));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * Text().size()));
}

// Scanning resumes at the inserted text, which cannot contain the search text.
BENCHMARK_CAPTURE(Library, Rescanning/tsruntime, u"fg", u"F", 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Peer, Rescanning/peer, u"fg", u"F", false)->Unit(benchmark::kMillisecond);
// The replacement contains the search text: scanning resumes after it.
BENCHMARK_CAPTURE(Library, ResumingAfter/tsruntime, u"fg", u"<fg>", 0)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Peer, ResumingAfter/peer, u"fg", u"<fg>", false)->Unit(benchmark::kMillisecond);
// Text compare: both sides fold every character they compare.
BENCHMARK_CAPTURE(Library, TextCompare/tsruntime, u"FG", u"F", 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Peer, TextCompare/peer, u"FG", u"F", true)->Unit(benchmark::kMillisecond);
// The same beside a binary find of the lower-case text: what folding costs beyond it.
BENCHMARK_CAPTURE(Library, TextCompareVsBinary/tsruntime, u"FG", u"F", 1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Peer, TextCompareVsBinary/peer, u"fg", u"F", false)
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) { return tsruntime_bench::RunWithPeerRatios(argc, argv); }
