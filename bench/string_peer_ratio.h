// A benchmark main that prints how each library case compares with its peer.
//
// Name the two benchmarks of a pair "<function>/<case>/tsruntime" and
// "<function>/<case>/peer" (BENCHMARK_CAPTURE(Function, Case/tsruntime, ...) does so);
// after the usual table, one line per case gives the library's time divided by the
// peer's (below 1: the library is faster).
//
// The C allocator's thresholds are fixed before anything runs. Left to adapt, glibc
// hands freed memory back to the system or keeps it depending on the sizes freed
// before, so one side of a pair could pay page faults on every iteration that the
// other side's history spared it.
#pragma once

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdio>
#include <map>
#include <string>

namespace tsruntime_bench {

class PeerRatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      if (r.run_type != Run::RT_Iteration || r.error_occurred) continue;
      std::string name = r.benchmark_name();
      // Settings the run adds to the name ("/min_time:3.000") are not part of it.
      for (size_t setting; (setting = name.rfind('/')) != std::string::npos &&
                           name.find(':', setting) != std::string::npos;) {
        name.resize(setting);
      }
      const size_t first = name.find('/'), last = name.rfind('/');
      if (first == last) continue;
      const std::string side = name.substr(last + 1);
      const std::string key = name.substr(first + 1, last - first - 1);
      if (side == "tsruntime") cases_[key].library = r.GetAdjustedCPUTime();
      if (side == "peer") cases_[key].peer = r.GetAdjustedCPUTime();
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const auto& [name, times] : cases_) {
      if (times.library <= 0 || times.peer <= 0) continue;
      std::printf("%-32s library / peer time = %.2f\n", name.c_str(), times.library / times.peer);
    }
  }

 private:
  struct Times {
    double library = 0, peer = 0;
  };
  std::map<std::string, Times> cases_;
};

inline int RunWithPeerRatios(int argc, char** argv) {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the largest glibc allows
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  PeerRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}

}  // namespace tsruntime_bench
