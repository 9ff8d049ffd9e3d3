// The cost of a late-bound call beside the same call made early bound from C++.
//
// Each BM_LateBound_X has a peer BM_EarlyBound_X doing the same work through the C++
// interface; after the table the program prints, for each pair, how many times the
// early-bound call the late-bound one costs (CPU time). A late-bound iteration includes what a
// host does per call: building the argument list, finding the member by name, binding
// and converting the arguments, and reading the result.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

// A class with the argument shapes library classes use most: two Longs, texts with an
// optional one, and a Long written back.
class clsBenchTarget : public Object {
 public:
  TSRUNTIME_CLASS_INFO;
  int32_t Scale(int32_t Value, int32_t Factor);
  String Join(const String& First, const String& Second, const String& Separator);
  void Advance(int32_t& Position, int32_t Step);
};

[[gnu::noinline]] int32_t clsBenchTarget::Scale(int32_t Value, int32_t Factor) {
  return Value * Factor;
}
[[gnu::noinline]] String clsBenchTarget::Join(const String& First, const String& Second,
                                              const String& Separator) {
  return First + Separator + Second;
}
[[gnu::noinline]] void clsBenchTarget::Advance(int32_t& Position, int32_t Step) {
  Position += Step;
}

TSRUNTIME_DEFINE_CLASS(clsBenchTarget) {
  static const ClassInfo info =
      ClassBuilder<clsBenchTarget>("clsBenchTarget")
          .Method("Scale", &clsBenchTarget::Scale, {"Value", "Factor"})
          .Method("Join", &clsBenchTarget::Join, {"First", "Second", Opt("Separator", u", ")})
          .Method("Advance", &clsBenchTarget::Advance, {"Position", Opt("Step", int32_t{1})})
          .Build();
  return info;
}

void BM_EarlyBound_Language(benchmark::State& state) {
  auto lib = New<clsZKRunTimeLib>();
  int32_t i = 0;
  for (auto _ : state) {
    lib->LetLanguage(++i & 1);
    benchmark::DoNotOptimize(lib->Language());
  }
}
BENCHMARK(BM_EarlyBound_Language);

void BM_LateBound_Language(benchmark::State& state) {
  Ref<Object> lib = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  int32_t i = 0;
  for (auto _ : state) {
    std::vector<Argument> value = {{String(), Variant(++i & 1)}};
    Invoke(*lib, u"Language", InvokeKind::kLet, value);
    std::vector<Argument> none;
    benchmark::DoNotOptimize(Invoke(*lib, u"Language", InvokeKind::kCall, none).asLong());
  }
}
BENCHMARK(BM_LateBound_Language);

void BM_EarlyBound_TwoLongs(benchmark::State& state) {
  auto target = New<clsBenchTarget>();
  int32_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(target->Scale(++i, 3));
}
BENCHMARK(BM_EarlyBound_TwoLongs);

void BM_LateBound_TwoLongs(benchmark::State& state) {
  Ref<Object> target = CreateObject(u"clsBenchTarget");
  int32_t i = 0;
  for (auto _ : state) {
    std::vector<Argument> args = {{String(), Variant(++i)}, {String(), Variant(int32_t{3})}};
    benchmark::DoNotOptimize(Invoke(*target, u"Scale", InvokeKind::kCall, args).asLong());
  }
}
BENCHMARK(BM_LateBound_TwoLongs);

// The same with both arguments named, in another case than declared.
void BM_EarlyBound_TwoLongsNamed(benchmark::State& state) {
  BM_EarlyBound_TwoLongs(state);
}
BENCHMARK(BM_EarlyBound_TwoLongsNamed);

void BM_LateBound_TwoLongsNamed(benchmark::State& state) {
  Ref<Object> target = CreateObject(u"clsBenchTarget");
  int32_t i = 0;
  for (auto _ : state) {
    std::vector<Argument> args = {{u"factor", Variant(int32_t{3})}, {u"VALUE", Variant(++i)}};
    benchmark::DoNotOptimize(Invoke(*target, u"scale", InvokeKind::kCall, args).asLong());
  }
}
BENCHMARK(BM_LateBound_TwoLongsNamed);

void BM_EarlyBound_TextsWithDefault(benchmark::State& state) {
  auto target = New<clsBenchTarget>();
  const String first = u"Иванов", second = u"Пётр";
  for (auto _ : state) benchmark::DoNotOptimize(target->Join(first, second, u", "));
}
BENCHMARK(BM_EarlyBound_TextsWithDefault);

void BM_LateBound_TextsWithDefault(benchmark::State& state) {
  Ref<Object> target = CreateObject(u"clsBenchTarget");
  const String first = u"Иванов", second = u"Пётр";
  for (auto _ : state) {
    std::vector<Argument> args = {{String(), Variant(first)}, {String(), Variant(second)}};
    benchmark::DoNotOptimize(Invoke(*target, u"Join", InvokeKind::kCall, args));
  }
}
BENCHMARK(BM_LateBound_TextsWithDefault);

void BM_EarlyBound_WrittenBack(benchmark::State& state) {
  auto target = New<clsBenchTarget>();
  int32_t position = 0;
  for (auto _ : state) {
    target->Advance(position, 2);
    benchmark::DoNotOptimize(position);
  }
}
BENCHMARK(BM_EarlyBound_WrittenBack);

void BM_LateBound_WrittenBack(benchmark::State& state) {
  Ref<Object> target = CreateObject(u"clsBenchTarget");
  Variant position(int32_t{0});
  for (auto _ : state) {
    std::vector<Argument> args = {{String(), position}, {String(), Variant(int32_t{2})}};
    Invoke(*target, u"Advance", InvokeKind::kCall, args);
    position = std::move(args[0].value);
  }
  benchmark::DoNotOptimize(position);
}
BENCHMARK(BM_LateBound_WrittenBack);

// Prints the table, then the late/early ratio of every pair. The ratio is of CPU time,
// which a busy machine disturbs less than wall time.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      if (r.run_type == Run::RT_Iteration && !r.error_occurred) {
        ns_[r.benchmark_name()] = r.GetAdjustedCPUTime();
      }
    }
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    const std::string early = "BM_EarlyBound_", late = "BM_LateBound_";
    for (const auto& [name, ns] : ns_) {
      if (name.rfind(late, 0) != 0) continue;
      const std::string what = name.substr(late.size());
      auto peer = ns_.find(early + what);
      if (peer == ns_.end() || peer->second <= 0) continue;
      std::printf("%-18s CPU per call: late bound %6.1f ns, early bound %5.1f ns: %5.1fx\n",
                  what.c_str(), ns, peer->second, ns / peer->second);
    }
  }

 private:
  std::map<std::string, double> ns_;
};

}  // namespace
}  // namespace tsruntime

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  tsruntime::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
