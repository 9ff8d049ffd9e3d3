// clsZKRegistry: keys with the platform's rules for paths and roots; values through the
// ANSI code page with the terminator rules, numbers, binary data, type mismatches and the
// default value; where the store lives, with which modes, who may write it, and what
// processes writing at once or killed mid-write leave in it.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <random>
#include <thread>

#include "support/child_process.h"
#include "system/fs_fixture.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKRegistry.h"

namespace tsruntime {
namespace {

using namespace std::string_literals;
using testing::Case;
using testing::U8;

constexpr int32_t HKCU = HKEY_CURRENT_USER;
const String kKey = u"Software\\Tessaly\\Values";

std::string Said(bool b) { return b ? "True" : "False"; }
std::string Failed(bool error) { return error ? " error" : ""; }
// The parts in order: a braced list is evaluated left to right, so a write comes before its read.
std::string Join(std::initializer_list<std::string> parts) {
  std::string text;
  for (const std::string& p : parts) text += p;
  return text;
}

// tsrt calling a registry member in a process of its own: what it printed, or the failure.
std::string Tsrt(const std::vector<std::string>& call, const testing::EnvChanges& env,
                 std::optional<uid_t> uid = std::nullopt) {
  std::vector<std::string> argv{TSRT_PATH, "call", "clsZKRegistry"};
  argv.insert(argv.end(), call.begin(), call.end());
  const testing::ChildResult r = testing::RunProgram(argv, env, uid);
  return r.exit_code == 0 ? r.output : "exit " + std::to_string(r.exit_code) + ": " + r.output;
}

class Registry : public testing::FsTest {
 protected:
  Ref<clsZKRegistry> reg = New<clsZKRegistry>();

  // " present" or " missing": a key's default value reads without an error only when it exists.
  std::string Exists(const String& path, int32_t root = HKCU) {
    bool error = false;
    reg->GetString(root, path, u"", u"", &error);
    return error ? " missing" : " present";
  }
  // A read's result and whether it reported an error.
  std::string ReadString(const String& name) {
    bool error = false;
    const String s = reg->GetString(HKCU, kKey, name, u"dflt", &error);
    return "\"" + (s.size() > 40 ? std::to_string(s.size()) + " characters" : U8(s)) + "\"" + Failed(error);
  }
  std::string ReadLong(const String& name) {
    bool error = false;
    const int32_t n = reg->GetLong(HKCU, kKey, name, -1, &error);
    return std::to_string(n) + Failed(error);
  }
  std::string ReadBinary(const String& name) {
    bool error = false;
    const SafeArray a = reg->GetBinary(HKCU, kKey, name, &error);
    std::string text = a.isDimensioned() ? std::to_string(a.lbound()) + " to " + std::to_string(a.ubound()) + ":"
                                         : "never dimensioned";
    for (uint8_t b : a.bytes()) text += " " + std::to_string(b);
    return text + Failed(error);
  }
  std::string WriteAndRead(const String& name, const String& value) {
    return Join({reg->SetString(HKCU, kKey, name, value) ? "" : "not written ", ReadString(name)});
  }
};

TEST_F(Registry, KeysAreCreatedAndDeletedByThePlatformsRules) {
  const Case cases[] = {
      {"creating a key creates every level", [&] { return Join({Said(reg->CreateSubKey(HKCU, u"A\\B\\C")), Exists(u"A\\B")}); },
       "True present"},
      {"creating an existing key opens it", [&] { return Said(reg->CreateSubKey(HKCU, u"A")); }, "True"},
      {"keys are found in any case", [&] { return Join({Said(reg->CreateSubKey(HKCU, u"Окно")), Exists(u"оКНО")}); }, "True present"},
      {"a path that starts with a backslash is refused", [&] { return Said(reg->CreateSubKey(HKCU, u"\\Lead")); }, "False"},
      {"a path with an empty level is refused", [&] { return Join({Said(reg->CreateSubKey(HKCU, u"X\\\\Y")), Exists(u"X")}); },
       "False missing"},
      {"one trailing backslash is ignored", [&] { return Join({Said(reg->CreateSubKey(HKCU, u"T\\")), Exists(u"T")}); }, "True present"},
      {"an empty path is the root key itself",
       [&] { return Join({Said(reg->SetString(HKCU, u"", u"AtRoot", u"yes")), U8(reg->GetString(HKCU, u"", u"AtRoot"))}); }, "Trueyes"},
      {"a setter creates a missing key first", [&] { return Join({Said(reg->SetLong(HKCU, u"N\\D", u"N", 1)), Exists(u"N")}); },
       "True present"},
      {"a key with subkeys is not deleted", [&] { return Join({Said(reg->DeleteKey(HKCU, u"A\\B")), Exists(u"A\\B\\C")}); },
       "False present"},
      {"a key without subkeys is deleted, its parent stays",
       [&] { return Join({Said(reg->DeleteKey(HKCU, u"a\\b\\c")), Exists(u"A\\B\\C"), Exists(u"A\\B")}); }, "True missing present"},
      {"a missing key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"Nope")); }, "False"},
      {"the root key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"")); }, "False"},
      {"deleting a value leaves the key and its other values",
       [&] {
         reg->SetString(HKCU, u"V", u"One", u"1");
         reg->SetString(HKCU, u"V", u"Two", u"2");
         return Join({Said(reg->DeleteKey(HKCU, u"V", u"one")), Exists(u"V"), U8(reg->GetString(HKCU, u"V", u"Two"))});
       },
       "True present2"},
      {"a missing value cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"V", u"One")); }, "False"},
      {"a handle that is no root fails", [&] { return Said(reg->CreateSubKey(12345, u"K")); }, "False"},
      {"performance data is not a key of the store", [&] { return Said(reg->SetLong(HKEY_PERFORMANCE_DATA, u"K", u"N", 1)); }, "False"},
      {"a machine-wide root is a store of its own",
       [&] { return Join({Said(reg->SetLong(HKEY_LOCAL_MACHINE, u"S", u"N", 1)), Exists(u"S", HKEY_LOCAL_MACHINE), Exists(u"S")}); },
       "True present missing"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(Registry, StringsKeepTheTerminatorRulesOfTheAnsiCalls) {
  const Case cases[] = {
      {"a named string reads back as written", [&] { return WriteAndRead(u"Name", u"Привет, мир"); }, "\"Привет, мир\""},
      {"characters the code page lacks read as question marks", [&] { return WriteAndRead(u"Name", u"日本ё"); }, "\"??ё\""},
      {"a zero at the end is taken for the terminator", [&] { return WriteAndRead(u"Name", u"ab\0"s); }, "\"ab\""},
      {"a zero inside is kept", [&] { return WriteAndRead(u"Name", u"a\0b"s); }, "\"a\0b\""s},
      {"an empty named string is stored without bytes: a failure", [&] { return WriteAndRead(u"Name", u""); }, "\"dflt\" error"},
      {"the default value holds the text up to its first zero", [&] { return WriteAndRead(u"", u"ab\0cd"s); }, "\"ab\""},
      {"an empty default value reads back empty", [&] { return WriteAndRead(u"", u""); }, "\"\""},
      {"16,383 characters and the terminator fill the buffer", [&] { return WriteAndRead(u"L", String(16383, u'x')); },
       "\"16383 characters\""},
      {"16,384 characters do not fit the buffer", [&] { return WriteAndRead(u"L", String(16384, u'x')); }, "\"dflt\" error"},
      {"a value name is found in any case",
       [&] { return Join({WriteAndRead(u"Ёлка", u"1"), WriteAndRead(u"ёЛКА", u"2"), ReadString(u"ЁЛКА")}); }, "\"1\"\"2\"\"2\""},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(Registry, ValuesReadBackOnlyAsTheirOwnTypeAndTheDefaultValueIsReadUntyped) {
  const SafeArray five = SafeArray::FromBytes(std::vector<uint8_t>{0, 10, 13, 128, 255}, 5),
                  four = SafeArray::FromBytes(std::vector<uint8_t>{1, 0, 0, 0}), none(VarType::kByte, {Bounds{0, -1}});
  const Case cases[] = {
      {"a missing key gives the default", [&] { return ReadString(u"Nothing"); }, "\"dflt\" error"},
      {"a number reads back", [&] { return Join({Said(reg->SetLong(HKCU, kKey, u"N", -5)), ReadLong(u"N")}); }, "True-5"},
      {"a number read as a string gives the default", [&] { return ReadString(u"N"); }, "\"dflt\" error"},
      {"a string read as a number gives the default", [&] { return Join({WriteAndRead(u"S", u"5"), ReadLong(u"S")}); }, "\"5\"-1 error"},
      {"every byte reads back, at 0 to size - 1", [&] { return Join({Said(reg->SetBinary(HKCU, kKey, u"B", five)), ReadBinary(u"B")}); },
       "True0 to 4: 0 10 13 128 255"},
      {"four bytes read as a number give the default",
       [&] { return Join({Said(reg->SetBinary(HKCU, kKey, u"B", four)), ReadLong(u"B")}); }, "True-1 error"},
      {"a number or string read as binary gives a never-dimensioned array", [&] { return ReadBinary(u"N") + ReadBinary(u"S"); },
       "never dimensioned errornever dimensioned error"},
      {"no elements write a value of no bytes: a failure", [&] { return Join({Said(reg->SetBinary(HKCU, kKey, u"E", none)), ReadBinary(u"E")}); },
       "Truenever dimensioned error"},
      {"a never-dimensioned array writes no bytes too",
       [&] { return Join({Said(reg->SetBinary(HKCU, kKey, u"F", SafeArray(VarType::kByte))), ReadBinary(u"F")}); },
       "Truenever dimensioned error"},
      {"another element type is a type mismatch",
       [&] { return testing::Outcome([&] { reg->SetBinary(HKCU, kKey, u"V", SafeArray::FromVariants({Variant(1)})); }); }, "error 13"},
      {"GetBinary is declared to return Byte()",
       [&] { return U8(TypeName(FindClass(u"clsZKRegistry")->find(u"GetBinary", MemberKind::kMethod)->returnType)); }, "Byte()"},
      {"a key without a default value reads it as an empty string", [&] { return ReadString(u""); }, "\"\""},
      {"a number in the default value reads as a string of its bytes",
       [&] { return Join({Said(reg->SetLong(HKCU, kKey, u"", 0x00636261)), ReadString(u"")}); }, "True\"abc\""},
      {"the default value reads as a number through the empty name",
       [&] { return Join({Said(reg->SetLong(HKCU, kKey, u"", 7)), ReadLong(u"")}); }, "True7"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

// The installer runs as root under a strict umask; the store folder is the library's to
// make, and ordinary users read what it wrote after its process ended.
TEST_F(Registry, TheStoreIsMadeWithItsOwnModesWhereverItLivesAndUsersWriteNothingMachineWide) {
  // The environment's values and the paths made are below the scratch folder.
  const struct { const char* what; mode_t umask; int32_t root; testing::EnvChanges env;
                 std::vector<std::pair<const char*, mode_t>> made; } cases[] = {
      {"under XDG_CONFIG_HOME", 022, HKCU, {{"XDG_CONFIG_HOME", "xdg"}, {"TSRUNTIME_REGISTRY_DIR", std::nullopt}},
       {{"xdg", 0700}, {"xdg/tsruntime", 0700}, {"xdg/tsruntime/registry.db", 0600}}},
      {"under ~/.config without it", 022, HKCU,
       {{"HOME", "home"}, {"XDG_CONFIG_HOME", std::nullopt}, {"TSRUNTIME_REGISTRY_DIR", std::nullopt}},
       {{"home/.config", 0700}, {"home/.config/tsruntime", 0700}, {"home/.config/tsruntime/registry.db", 0600}}},
      {"per-user, moved, umask 000", 0, HKCU, {{"TSRUNTIME_REGISTRY_DIR", "u/store"}},
       {{"u", 0700}, {"u/store", 0700}, {"u/store/user.db", 0600}}},
      {"machine-wide, moved, umask 077", 077, HKEY_LOCAL_MACHINE, {{"TSRUNTIME_REGISTRY_DIR", "m/store"}},
       {{"m", 0755}, {"m/store", 0755}, {"m/store/machine.db", 0644}}},
  };
  MakeFolder("home");
  for (const auto& c : cases) {
    testing::EnvChanges env;
    for (const auto& [name, value] : c.env) env[name] = value ? std::optional(Native(*value)) : std::nullopt;
    const mode_t umask_before = umask(c.umask);
    EXPECT_EQ(Tsrt({"SetString", std::to_string(c.root), R"("K")", R"("N")", R"("v")"}, env), "True\n") << c.what;
    umask(umask_before);
    for (const auto& [path, mode] : c.made) EXPECT_EQ(Mode(path), mode) << c.what << ": " << path;
  }

  if (!testing::CanRunAsOrdinaryUser()) GTEST_SKIP() << "ordinary users need root and setpriv";
  ASSERT_EQ(chmod(Native().c_str(), 0755), 0);
  const testing::EnvChanges env{{"TSRUNTIME_REGISTRY_DIR", Native("m/store")}};
  const std::string hklm = std::to_string(HKEY_LOCAL_MACHINE);
  const struct { const char* what; std::vector<std::string> call; std::string printed; } as_user[] = {
      {"reads the value", {"GetString", hklm, R"("K")", R"("N")", "", "False"}, "\"v\"\nblnError = False\n"},
      {"cannot change it", {"SetString", hklm, R"("K")", R"("N")", R"("x")"}, "False\n"},
      {"cannot create a key", {"CreateSubKey", std::to_string(HKEY_CLASSES_ROOT), R"("New")"}, "False\n"},
      {"cannot delete the value", {"DeleteKey", hklm, R"("K")", R"("N")"}, "False\n"},
  };
  for (const auto& c : as_user) EXPECT_EQ(Tsrt(c.call, env, testing::ThrowawayUid()), c.printed) << "a user " << c.what;
  EXPECT_EQ(Tsrt({"GetString", hklm, R"("K")", R"("N")"}, env), "\"v\"\n");
}

String Name(const char* prefix, int a, int b = -1) {
  return FromAscii(prefix + std::to_string(a) + (b < 0 ? "" : "-" + std::to_string(b)));
}
// A value long enough to span several database pages, so that a torn write would show.
String Payload(int n) { return String(3000 + n % 100, static_cast<char16_t>(u'A' + n % 26)); }
// Forks a child that runs `body` and leaves with its result as exit status; the status, or
// 100 + the signal that ended it.
template <class F>
pid_t Spawn(F body) {
  const pid_t pid = fork();
  if (pid == 0) _exit(body());
  return pid;
}
int ExitStatus(pid_t pid) {
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
}

// Three processes write 4,000 values each into the same eight keys and read each back,
// while a fourth is killed 200 times at random moments: it reports each write once
// committed, and dies after a random number of reports, a random part into the next write.
TEST_F(Registry, ProcessesWritingAtOnceOrKilledMidWriteLoseNothingCommitted) {
  constexpr int kRacers = 3, kWrites = 4000;
  std::vector<pid_t> racers;
  for (int p = 0; p < kRacers; ++p) {
    racers.push_back(Spawn([&] {
      auto r = New<clsZKRegistry>();
      int wrong = 0;
      for (int i = 0; i < kWrites; ++i) {
        wrong += !r->SetLong(HKCU, Name("Race\\K", i % 8), Name("P", p, i), i * 10 + p);
        wrong += r->GetLong(HKCU, Name("Race\\K", i % 8), Name("P", p, i), -1) != i * 10 + p;
      }
      return wrong == 0 ? 0 : 1;
    }));
  }
  std::mt19937 random(20261123);
  int committed = -1;  // the last write a killed writer reported committed
  for (int round = 0; round < 200; ++round) {
    int news[2];
    ASSERT_EQ(pipe(news), 0);
    const int first = committed + 1;
    const pid_t writer = Spawn([&] {
      close(news[0]);
      auto r = New<clsZKRegistry>();
      for (int n = first;; ++n) {
        if (!r->SetString(HKCU, u"Kill", Name("V", n), Payload(n)) || !r->SetLong(HKCU, u"Kill", u"Last", n)) return 1;
        if (write(news[1], &n, sizeof n) != sizeof n) return 2;  // both writes returned: committed
      }
    });
    close(news[1]);
    const int victim = first + static_cast<int>(random() % 4);  // the last write to see reported
    for (int n = 0; committed < victim && read(news[0], &n, sizeof n) == sizeof n;) committed = n;
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    kill(writer, SIGKILL);
    const int status = ExitStatus(writer);
    for (int n = 0; read(news[0], &n, sizeof n) == sizeof n;) committed = n;
    close(news[0]);
    ASSERT_EQ(status, 100 + SIGKILL) << "round " << round << ": the writer stopped by itself ("
                                     << (status == 1 ? "a write failed" : "its report failed") << ")";
  }
  for (pid_t c : racers) EXPECT_EQ(ExitStatus(c), 0) << "a process saw a failed write or read";
  // Every write reported is there; whatever else is there is whole.
  int missing = 0, lost = 0, torn = 0;
  for (int p = 0; p < kRacers; ++p) {
    for (int i = 0; i < kWrites; ++i) missing += reg->GetLong(HKCU, Name("Race\\K", i % 8), Name("P", p, i), -1) != i * 10 + p;
  }
  for (int n = 0; n <= committed + 1; ++n) {
    bool error = true;
    const String v = reg->GetString(HKCU, u"Kill", Name("V", n), u"", &error);
    lost += error && n <= committed;
    torn += !error && v != Payload(n);
  }
  EXPECT_EQ(missing, 0) << "writes lost between processes";
  EXPECT_EQ(lost, 0) << "committed writes lost by a killed process";
  EXPECT_EQ(torn, 0);
  EXPECT_GE(reg->GetLong(HKCU, u"Kill", u"Last", -1), committed);
  EXPECT_TRUE(reg->SetLong(HKCU, u"Kill", u"After", 1)) << "the store takes writes again";
}

}  // namespace
}  // namespace tsruntime
