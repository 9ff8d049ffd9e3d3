// clsZKRegistry SetString + GetString pairs per second, beside two peers doing the same
// writes and reads:
//   - raw SQLite: one table of (key, name, value), the same database settings (WAL,
//     synchronous NORMAL), one prepared upsert and one prepared select, each its own
//     transaction as the registry's are;
//   - clsZKIniFile: PutData + GetData of one key in a file of 100, each PutData
//     rewriting the file as that class does.
// Each side cycles through 100 value names of one key (section). "items_per_second"
// counts pairs; the ratio lines compare times per pair (below 1: the registry is faster).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "string_peer_ratio.h"
#include "tsruntime/clsZKIniFile.h"
#include "tsruntime/clsZKRegistry.h"

namespace {

using namespace tsruntime;

constexpr int kNames = 100;

std::filesystem::path Folder() {
  static const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      ("tsruntime-registry-bench-" + std::to_string(::getpid()));
  return folder;
}

String NameOf(int i) { return FromAscii("Name" + std::to_string(i)); }
String ValueOf(int64_t i) { return FromAscii("value number " + std::to_string(i)); }

void Registry(benchmark::State& state) {
  auto reg = New<clsZKRegistry>();
  const String key = u"Software\\Tessaly\\Bench";
  int64_t n = 0;
  for (auto _ : state) {
    const String name = NameOf(static_cast<int>(n % kNames));
    const String value = ValueOf(n++);
    if (!reg->SetString(HKEY_CURRENT_USER, key, name, value) ||
        reg->GetString(HKEY_CURRENT_USER, key, name) != value) {
      state.SkipWithError("the registry lost a value");
      return;
    }
  }
  state.SetItemsProcessed(state.iterations());
}

void RawSqlite(benchmark::State& state) {
  sqlite3* db = nullptr;
  const std::string file = (Folder() / "raw.db").string();
  sqlite3_open(file.c_str(), &db);
  sqlite3_exec(db,
               "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
               "CREATE TABLE IF NOT EXISTS v(key TEXT, name TEXT, value BLOB,"
               " PRIMARY KEY(key, name));",
               nullptr, nullptr, nullptr);
  sqlite3_stmt *put = nullptr, *get = nullptr;
  sqlite3_prepare_v2(db, "INSERT INTO v VALUES(?1, ?2, ?3) ON CONFLICT DO UPDATE SET value=?3", -1,
                     &put, nullptr);
  sqlite3_prepare_v2(db, "SELECT value FROM v WHERE key=?1 AND name=?2", -1, &get, nullptr);
  const std::string key = "SOFTWARE\\TESSALY\\BENCH";
  int64_t n = 0;
  for (auto _ : state) {
    const std::string name = "NAME" + std::to_string(n % kNames);
    const std::string value = "value number " + std::to_string(n++);
    sqlite3_bind_text(put, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    sqlite3_bind_text(put, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_bind_blob(put, 3, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    const bool stored = sqlite3_step(put) == SQLITE_DONE;
    sqlite3_reset(put);
    sqlite3_bind_text(get, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    sqlite3_bind_text(get, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    const bool found = sqlite3_step(get) == SQLITE_ROW &&
                       sqlite3_column_bytes(get, 0) == static_cast<int>(value.size());
    sqlite3_reset(get);
    if (!stored || !found) {
      state.SkipWithError("SQLite lost a value");
      break;
    }
  }
  sqlite3_finalize(put);
  sqlite3_finalize(get);
  sqlite3_close(db);
  state.SetItemsProcessed(state.iterations());
}

void IniFile(benchmark::State& state) {
  const std::string file = (Folder() / "bench.ini").string();
  {
    std::ofstream ini(file, std::ios::binary);
    ini << "[Bench]\r\n";
    for (int i = 0; i < kNames; ++i) ini << "Name" << i << " = value\r\n";
  }
  auto ini = New<clsZKIniFile>();
  ini->LetFullName(FromUtf8(file));
  int64_t n = 0;
  String read;
  for (auto _ : state) {
    const String name = NameOf(static_cast<int>(n % kNames));
    const String value = ValueOf(n++);
    if (!ini->PutData(name, value, u"Bench") || !ini->GetData(name, read, u"Bench") ||
        read != value) {
      state.SkipWithError("the INI file lost a value");
      return;
    }
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(Registry)->Name("SetGetString/vs_sqlite/tsruntime");
BENCHMARK(RawSqlite)->Name("SetGetString/vs_sqlite/peer");
BENCHMARK(Registry)->Name("SetGetString/vs_ini/tsruntime");
BENCHMARK(IniFile)->Name("SetGetString/vs_ini/peer");

}  // namespace

int main(int argc, char** argv) {
  std::filesystem::create_directories(Folder());
  setenv("TSRUNTIME_REGISTRY_DIR", Folder().c_str(), 1);
  const int result = tsruntime_bench::RunWithPeerRatios(argc, argv);
  std::filesystem::remove_all(Folder());
  return result;
}
