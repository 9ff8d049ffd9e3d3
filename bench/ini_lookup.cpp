// clsZKIniFile.GetData of every key of a 100,000-line file beside Python's configparser
// reading the same file and getting the same keys.
//
// Each iteration makes a new object, points it at the file and looks up every key, so
// the library's time includes reading the file and building and sorting its index. The
// peer runs in one python3 process per iteration and times its own work the same way
// (reading and parsing, then one get per key), without the interpreter's start-up, and
// checks that it found every value. Both sides are timed in processor time (user and
// system) of their own process, so that other work on a busy machine does not count.
// Reading the output: the benchmark's time is the library's; "peer_s" is
// configparser's; "ratio" is library / peer (below 1: faster).
//
// IndexOfKeys builds the index of 65,536 keys given as a source string, once with the
// keys in an order that is hard for the index's sort (the larger half of the keys
// interleaved with the smaller half, each half ascending) and once with the same lines
// shuffled, its peer; "library / peer time" after the table is the hard order's time
// divided by the shuffled order's.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <random>

#include <ctime>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "string_peer_ratio.h"
#include "tsruntime/clsZKIniFile.h"

namespace {

using namespace tsruntime;

// Processor time of this process so far, in seconds.
double CpuSeconds() {
  timespec t{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

constexpr int kSections = 1000;
constexpr int kKeysPerSection = 99;  // with the headers, 100,000 lines

std::string SectionName(int s) { return "section" + std::to_string(s); }
std::string KeyName(int k) { return "key" + std::to_string(k); }
std::string Value(int s, int k) { return "value " + std::to_string(s * 1000 + k) + " of text"; }

std::filesystem::path Folder() {
  static const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      ("tsruntime-ini-bench-" + std::to_string(::getpid()));
  return folder;
}
std::string IniPath() { return (Folder() / "big.ini").string(); }
std::string ScriptPath() { return (Folder() / "peer.py").string(); }

void WriteFiles() {
  std::filesystem::create_directories(Folder());
  std::ofstream ini(IniPath(), std::ios::binary);
  for (int s = 0; s < kSections; ++s) {
    ini << "[" << SectionName(s) << "]\r\n";
    for (int k = 0; k < kKeysPerSection; ++k) ini << KeyName(k) << " = " << Value(s, k) << "\r\n";
  }
  std::ofstream(ScriptPath()) <<
      "import configparser, sys, time\n"
      "keys = [('section%d' % s, 'key%d' % k) for s in range(" << kSections << ")"
      " for k in range(" << kKeysPerSection << ")]\n"
      "start = time.process_time()\n"
      "c = configparser.ConfigParser(interpolation=None)\n"
      "c.read(sys.argv[1], encoding='cp1251')\n"
      "found = sum(1 for s, k in keys if c.get(s, k).startswith('value '))\n"
      "elapsed = time.process_time() - start\n"
      "print(elapsed if found == len(keys) else -1)\n";
}

// configparser's own time for one run, or a negative number when it failed.
double PeerSeconds() {
  FILE* p = ::popen(("python3 '" + ScriptPath() + "' '" + IniPath() + "'").c_str(), "r");
  if (!p) return -1;
  double seconds = -1;
  if (std::fscanf(p, "%lf", &seconds) != 1) seconds = -1;
  ::pclose(p);
  return seconds;
}

void BM_GetDataOfEveryKey(benchmark::State& state) {
  std::vector<std::pair<String, String>> keys;  // (section, key), made once as the peer's are
  std::vector<String> values;
  for (int s = 0; s < kSections; ++s) {
    for (int k = 0; k < kKeysPerSection; ++k) {
      keys.emplace_back(FromAscii(SectionName(s)), FromAscii(KeyName(k)));
      values.push_back(FromAscii(Value(s, k)));
    }
  }
  const String file = FromUtf8(IniPath());
  double library = 0, peer = 0;
  for (auto _ : state) {
    const double start = CpuSeconds();
    auto ini = New<clsZKIniFile>();
    ini->LetFullName(file);
    String value;
    size_t found = 0;
    for (size_t i = 0; i < keys.size(); ++i) {
      found += ini->GetData(keys[i].second, value, keys[i].first) && value == values[i];
    }
    const double lib_s = CpuSeconds() - start;
    const double peer_s = PeerSeconds();
    state.SetIterationTime(lib_s);
    if (found != keys.size() || peer_s <= 0) {
      state.SkipWithError("a key was not found, by the library or by configparser");
      return;
    }
    library += lib_s, peer += peer_s;
  }
  state.counters["keys"] = static_cast<double>(keys.size());
  state.counters["peer_s"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = library / peer;
}
BENCHMARK(BM_GetDataOfEveryKey)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

constexpr int kIndexKeys = 65536;

// "key-b<i> = <i>" and "key-a<i> = <i>" lines alternating, or shuffled.
String IndexSource(bool interleaved) {
  std::vector<std::string> lines;
  for (int i = 0; i < kIndexKeys / 2; ++i) {
    const std::string n = std::to_string(100000 + i);
    lines.push_back("key-b" + n + " = " + n);
    lines.push_back("key-a" + n + " = " + n);
  }
  if (!interleaved) std::shuffle(lines.begin(), lines.end(), std::mt19937(5));
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return FromAscii(text);
}

void IndexOfKeys(benchmark::State& state, bool interleaved) {
  const String source = IndexSource(interleaved);
  for (auto _ : state) {
    auto ini = New<clsZKIniFile>();
    ini->LetSourceString(source);
    String value;
    if (!ini->GetData(u"key-a100007", value) || value != u"100007") {
      state.SkipWithError("the key was not found");
    }
  }
  state.SetItemsProcessed(state.iterations() * kIndexKeys);
}
BENCHMARK_CAPTURE(IndexOfKeys, keys65536/tsruntime, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IndexOfKeys, keys65536/peer, false)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  WriteFiles();
  tsruntime_bench::PeerRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  std::filesystem::remove_all(Folder());
  return 0;
}
