// clsZKRegistry: keys with the platform's rules for paths and roots; values through the
// ANSI code page with the terminator rules, numbers, binary data, type mismatches and the
// default value; where the store lives, with which modes, and who may write it.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include "support/child_process.h"
#include "support/outcome.h"
#include "tsruntime/clsZKRegistry.h"
#include "tsruntime/automation/dispatch.h"

namespace tsruntime {
namespace {

using namespace std::string_literals;
using testing::Case;
using testing::U8;

constexpr int32_t HKCU = HKEY_CURRENT_USER;
const String kKey = u"Software\\Tessaly\\Values";

std::string Said(bool b) { return b ? "True" : "False"; }

// Each test has a store of its own in a scratch folder.
class Registry : public ::testing::Test {
 protected:
  void SetUp() override { setenv("TSRUNTIME_REGISTRY_DIR", dir.c_str(), 1); }
  void TearDown() override {
    unsetenv("TSRUNTIME_REGISTRY_DIR");
    std::filesystem::remove_all(dir);
  }
  static std::string Scratch() {
    char pattern[] = "/tmp/tsrt-registry-XXXXXX";
    return mkdtemp(pattern);
  }
  const std::string dir = Scratch();
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
    return "\"" + (s.size() > 40 ? std::to_string(s.size()) + " characters" : U8(s)) + "\"" + (error ? " error" : "");
  }
  std::string ReadLong(const String& name) {
    bool error = false;
    const int32_t n = reg->GetLong(HKCU, kKey, name, -1, &error);
    return std::to_string(n) + (error ? " error" : "");
  }
  std::string ReadBinary(const String& name) {
    bool error = false;
    const SafeArray a = reg->GetBinary(HKCU, kKey, name, &error);
    std::string text = a.isDimensioned() ? std::to_string(a.lbound()) + " to " + std::to_string(a.ubound()) + ":"
                                         : "never dimensioned";
    for (uint8_t b : a.bytes()) text += " " + std::to_string(b);
    return text + (error ? " error" : "");
  }
  std::string WriteAndRead(const String& name, const String& value) {
    EXPECT_TRUE(reg->SetString(HKCU, kKey, name, value));
    return ReadString(name);
  }
};

TEST_F(Registry, KeysAreCreatedAndDeletedByThePlatformsRules) {
  const Case cases[] = {
      {"creating a key creates every missing level",
       [&] { auto s = Said(reg->CreateSubKey(HKCU, u"A\\B\\C")); return s + Exists(u"A\\B"); }, "True present"},
      {"creating an existing key opens it", [&] { return Said(reg->CreateSubKey(HKCU, u"A")); }, "True"},
      {"keys are found in any case, Cyrillic included",
       [&] { reg->CreateSubKey(HKCU, u"Настройки\\Окно"); return Exists(u"НАСТРОЙКИ\\окНО"); }, " present"},
      {"a path that starts with a backslash is refused", [&] { return Said(reg->CreateSubKey(HKCU, u"\\Lead")); }, "False"},
      {"a path with an empty level is refused",
       [&] { auto s = Said(reg->CreateSubKey(HKCU, u"X\\\\Y")); return s + Exists(u"X"); }, "False missing"},
      {"one trailing backslash is ignored",
       [&] { auto s = Said(reg->CreateSubKey(HKCU, u"Trail\\")); return s + Exists(u"Trail"); }, "True present"},
      {"an empty path is the root key itself",
       [&] { reg->SetString(HKCU, u"", u"AtRoot", u"yes"); return U8(reg->GetString(HKCU, u"", u"AtRoot")); }, "yes"},
      {"a setter creates a missing key first",
       [&] { auto s = Said(reg->SetLong(HKCU, u"New\\Deep", u"N", 1)); return s + Exists(u"New"); }, "True present"},
      {"a key with subkeys is not deleted",
       [&] { auto s = Said(reg->DeleteKey(HKCU, u"A\\B")); return s + Exists(u"A\\B\\C"); }, "False present"},
      {"a key without subkeys is deleted, its parent stays",
       [&] { auto s = Said(reg->DeleteKey(HKCU, u"a\\b\\c")); s += Exists(u"A\\B\\C"); return s + Exists(u"A\\B"); },
       "True missing present"},
      {"a missing key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"Nope")); }, "False"},
      {"the root key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"")); }, "False"},
      {"deleting a value leaves the key and its other values",
       [&] {
         reg->SetString(HKCU, u"V", u"One", u"1");
         reg->SetString(HKCU, u"V", u"Two", u"2");
         auto s = Said(reg->DeleteKey(HKCU, u"V", u"one"));
         s += Exists(u"V");
         return s + " " + U8(reg->GetString(HKCU, u"V", u"Two"));
       },
       "True present 2"},
      {"a missing value cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"V", u"One")); }, "False"},
      {"a value of a missing key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"Nope", u"One")); }, "False"},
      {"a handle that is no root fails", [&] { return Said(reg->CreateSubKey(12345, u"K")); }, "False"},
      {"performance data is not a key of the store",
       [&] { return Said(reg->SetString(HKEY_PERFORMANCE_DATA, u"K", u"N", u"v")); }, "False"},
      {"neither is dynamic data", [&] { return Exists(u"", HKEY_DYN_DATA); }, " missing"},
      {"a machine-wide root is a store of its own",
       [&] { reg->SetLong(HKEY_LOCAL_MACHINE, u"Soft", u"N", 1); auto s = Exists(u"Soft", HKEY_LOCAL_MACHINE); return s + Exists(u"Soft"); },
       " present missing"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(Registry, StringsKeepTheTerminatorRulesOfTheAnsiCalls) {
  const Case cases[] = {
      {"a named string reads back as written", [&] { return WriteAndRead(u"Name", u"Привет, мир"); }, "\"Привет, мир\""},
      {"characters the code page lacks come back as question marks", [&] { return WriteAndRead(u"Name", u"日本ё"); },
       "\"??ё\""},
      {"a zero at the end is taken for the terminator", [&] { return WriteAndRead(u"Name", u"ab\0"s); }, "\"ab\""},
      {"a zero inside is kept", [&] { return WriteAndRead(u"Name", u"a\0b"s); }, "\"a\0b\""s},
      {"an empty named string is stored without bytes and reads as a failure",
       [&] { return WriteAndRead(u"Name", u""); }, "\"dflt\" error"},
      {"the default value holds the text up to its first zero", [&] { return WriteAndRead(u"", u"ab\0cd"s); }, "\"ab\""},
      {"an empty default value reads back empty", [&] { return WriteAndRead(u"", u""); }, "\"\""},
      {"16,383 characters and the terminator fill the buffer exactly",
       [&] { return WriteAndRead(u"Long", String(16383, u'x')); }, "\"16383 characters\""},
      {"16,384 characters do not fit the buffer", [&] { return WriteAndRead(u"Long", String(16384, u'x')); },
       "\"dflt\" error"},
      {"a value name is found in any case, Cyrillic included",
       [&] { reg->SetString(HKCU, kKey, u"Ёлка", u"first"); reg->SetString(HKCU, kKey, u"ёЛКА", u"second"); return ReadString(u"ЁЛКА"); },
       "\"second\""},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(Registry, GettersFailOnAnotherTypeAndTheDefaultValueIsReadUntyped) {
  const SafeArray four_bytes = SafeArray::FromBytes(std::vector<uint8_t>{1, 0, 0, 0});
  const Case cases[] = {
      {"a missing key gives the default", [&] { return ReadString(u"Nothing"); }, "\"dflt\" error"},
      {"a number reads back", [&] { reg->SetLong(HKCU, kKey, u"N", -5); return ReadLong(u"N"); }, "-5"},
      {"a number read as a string gives the default", [&] { reg->SetLong(HKCU, kKey, u"N", 5); return ReadString(u"N"); },
       "\"dflt\" error"},
      {"a string read as a number gives the default", [&] { reg->SetString(HKCU, kKey, u"S", u"5"); return ReadLong(u"S"); },
       "-1 error"},
      {"four binary bytes read as a number give the default",
       [&] { reg->SetBinary(HKCU, kKey, u"B", four_bytes); return ReadLong(u"B"); }, "-1 error"},
      {"a number read as binary gives a never-dimensioned array", [&] { return ReadBinary(u"N"); },
       "never dimensioned error"},
      {"a string read as binary gives a never-dimensioned array", [&] { return ReadBinary(u"S"); },
       "never dimensioned error"},
      {"a key without a default value reads it as an empty string", [&] { return ReadString(u""); }, "\"\""},
      {"a number in the default value reads as a string of its bytes",
       [&] { reg->SetLong(HKCU, kKey, u"", 0x00636261); return ReadString(u""); }, "\"abc\""},
      {"the default value reads as a number through the empty name",
       [&] { reg->SetLong(HKCU, kKey, u"", 7); return ReadLong(u""); }, "7"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

TEST_F(Registry, BinaryValuesKeepEveryByteAndAnEmptyOneReadsAsAFailure) {
  std::vector<uint8_t> all(256);
  for (int i = 0; i < 256; ++i) all[i] = static_cast<uint8_t>(i);
  EXPECT_TRUE(reg->SetBinary(HKCU, kKey, u"All", SafeArray::FromBytes(all, 5)));
  bool error = true;
  const SafeArray back = reg->GetBinary(HKCU, kKey, u"All", &error);
  EXPECT_FALSE(error);
  EXPECT_EQ(back.lbound(), 0) << "the bounds are 0 to size - 1 whatever the written ones were";
  EXPECT_EQ(back.bytes(), all);
  const Case cases[] = {
      {"an array of no elements writes a value of no bytes, which reads as a failure",
       [&] { auto s = Said(reg->SetBinary(HKCU, kKey, u"Empty", SafeArray(VarType::kByte, {Bounds{0, -1}}))); return s + " " + ReadBinary(u"Empty"); },
       "True never dimensioned error"},
      {"a never-dimensioned array writes a value of no bytes too",
       [&] { auto s = Said(reg->SetBinary(HKCU, kKey, u"Empty", SafeArray(VarType::kByte))); return s + " " + ReadString(u"Empty"); },
       "True \"dflt\" error"},
      {"an array of another element type is a type mismatch",
       [&] { return testing::Outcome([&] { reg->SetBinary(HKCU, kKey, u"V", SafeArray::FromVariants({Variant(int32_t{1})})); }); },
       "error 13"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
  const MemberInfo* get = FindClass(u"clsZKRegistry")->find(u"GetBinary", MemberKind::kMethod);
  EXPECT_EQ(U8(TypeName(get->returnType)), "Byte()") << "what the type information declares";
}

// tsrt calling a registry member in a process of its own: what it printed, or the failure.
std::string Tsrt(const std::vector<std::string>& call, const testing::EnvChanges& env,
                 std::optional<uid_t> uid = std::nullopt) {
  std::vector<std::string> argv{TSRT_PATH, "call", "clsZKRegistry"};
  argv.insert(argv.end(), call.begin(), call.end());
  const testing::ChildResult r = testing::RunProgram(argv, env, uid);
  return r.exit_code == 0 ? r.output : "exit " + std::to_string(r.exit_code) + ": " + r.output;
}

// The installer runs as root under a strict umask; the store folder is the library's to make.
TEST_F(Registry, UsersReadWhatRootWroteAfterItsProcessEndedAndWriteNothingMachineWide) {
  if (!testing::CanRunAsOrdinaryUser()) GTEST_SKIP() << "needs root and setpriv";
  ASSERT_EQ(chmod(dir.c_str(), 0755), 0);
  const testing::EnvChanges env{{"TSRUNTIME_REGISTRY_DIR", dir + "/store"}};
  const std::string hklm = std::to_string(HKEY_LOCAL_MACHINE), key = R"("Software\Acme")";
  const mode_t umask_before = umask(077);
  const std::string installed = Tsrt({"SetString", hklm, key, R"("Path")", R"("/opt/acme")"}, env);
  umask(umask_before);
  ASSERT_EQ(installed, "True\n");
  const struct {
    const char* what;
    std::vector<std::string> call;
    std::string printed;
  } as_user[] = {
      {"reads the value", {"GetString", hklm, key, R"("Path")", "", "False"}, "\"/opt/acme\"\nblnError = False\n"},
      {"cannot change it", {"SetString", hklm, key, R"("Path")", R"("x")"}, "False\n"},
      {"cannot create a key", {"CreateSubKey", std::to_string(HKEY_CLASSES_ROOT), R"("New")"}, "False\n"},
      {"cannot delete the value", {"DeleteKey", hklm, key, R"("Path")"}, "False\n"},
  };
  for (const auto& c : as_user) EXPECT_EQ(Tsrt(c.call, env, testing::ThrowawayUid()), c.printed) << c.what;
  EXPECT_EQ(Tsrt({"GetString", hklm, key, R"("Path")"}, env), "\"/opt/acme\"\n");
}

TEST_F(Registry, TheStoreIsMadeWithItsOwnModesWhereverItLivesWhateverTheUmask) {
  const struct {
    const char* what;
    mode_t umask;
    int32_t root;
    testing::EnvChanges env;  // values below the scratch folder
    std::vector<std::pair<const char*, mode_t>> made;  // below the scratch folder
  } cases[] = {
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
  ASSERT_EQ(mkdir((dir + "/home").c_str(), 0755), 0);
  for (const auto& c : cases) {
    std::map<std::string, std::optional<std::string>> before;
    const auto apply = [](const std::string& name, const std::optional<std::string>& value) {
      value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    };
    for (const auto& [name, value] : c.env) {
      const char* old = getenv(name.c_str());
      before[name] = old ? std::optional<std::string>(old) : std::nullopt;
      apply(name, value ? std::optional<std::string>(dir + "/" + *value) : std::nullopt);
    }
    const mode_t umask_before = umask(c.umask);
    EXPECT_TRUE(New<clsZKRegistry>()->SetString(c.root, u"K", u"N", u"v")) << c.what;
    umask(umask_before);
    for (const auto& [name, value] : before) apply(name, value);
    for (const auto& [path, mode] : c.made) {
      struct stat st {};
      ASSERT_EQ(stat((dir + "/" + path).c_str(), &st), 0) << c.what << ": " << path;
      EXPECT_EQ(st.st_mode & 0777, mode) << c.what << ": " << path;
    }
  }
}

String Name(const char* prefix, int a, int b = -1) {
  return FromAscii(prefix + std::to_string(a) + (b < 0 ? "" : "-" + std::to_string(b)));
}
// A value long enough to span several database pages, so that a torn write would show.
String Payload(int n) {
  String text;
  while (text.size() < 3000) text += FromAscii(std::to_string(n) + ":");
  return text;
}
// Forks a child that runs `body` and leaves with its result as exit status.
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

using RegistryProcesses = Registry;

// Four processes, each writing 5,000 values and reading each back, into the same eight keys.
TEST_F(RegistryProcesses, FourProcessesWritingAndReadingTheSameKeysAtOnceLoseNothing) {
  constexpr int kProcesses = 4, kWrites = 5000, kKeys = 8;
  int gate[2];
  ASSERT_EQ(pipe(gate), 0);
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    children.push_back(Spawn([&] {
      close(gate[1]);
      char go;
      if (read(gate[0], &go, 1) < 0) return 10;  // starts when the gate closes
      auto r = New<clsZKRegistry>();
      int wrong = 0;
      for (int i = 0; i < kWrites; ++i) {
        const String key = Name("Race\\K", i % kKeys);
        bool error = true;
        wrong += !r->SetLong(HKCU, key, Name("P", p, i), i * 10 + p);
        wrong += r->GetLong(HKCU, key, Name("P", p, i), -1, &error) != i * 10 + p || error;
      }
      return wrong == 0 ? 0 : 1;
    }));
  }
  close(gate[0]);
  close(gate[1]);
  for (pid_t c : children) EXPECT_EQ(ExitStatus(c), 0) << "a process saw a failed write or read";
  int missing = 0;
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kWrites; ++i) missing += reg->GetLong(HKCU, Name("Race\\K", i % kKeys), Name("P", p, i), -1) != i * 10 + p;
  }
  EXPECT_EQ(missing, 0) << "writes lost between processes";
}

// The writer reports each write before it starts it and once it is committed; each round
// it is killed at a random write, after a random part of it, counted in reports, not time.
TEST_F(RegistryProcesses, AWriterKilledAtRandomMomentsLeavesEveryCommittedWrite) {
  constexpr int kKills = 200;
  std::mt19937 random(20261123);
  int committed = -1;  // the last write a writer reported committed
  for (int round = 0; round < kKills; ++round) {
    int news[2];
    ASSERT_EQ(pipe(news), 0);
    const int first = committed + 1;
    const pid_t writer = Spawn([&] {
      close(news[0]);
      auto r = New<clsZKRegistry>();
      for (int n = first;; ++n) {
        const int starting = -1 - n;
        if (write(news[1], &starting, sizeof n) != sizeof n) return 2;
        if (!r->SetString(HKCU, u"Kill", Name("V", n), Payload(n)) || !r->SetLong(HKCU, u"Kill", u"Last", n)) return 1;
        if (write(news[1], &n, sizeof n) != sizeof n) return 2;  // both writes returned: committed
      }
    });
    close(news[1]);
    const int victim = first + static_cast<int>(random() % 4);  // the write to kill inside
    int n = 0;
    while (read(news[0], &n, sizeof n) == sizeof n) {
      if (n >= 0) committed = n;
      if (n == -1 - victim) break;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    kill(writer, SIGKILL);
    const int status = ExitStatus(writer);
    while (read(news[0], &n, sizeof n) == sizeof n) committed = n >= 0 ? n : committed;
    close(news[0]);
    ASSERT_EQ(status, 100 + SIGKILL) << "round " << round << ": the writer stopped by itself ("
                                     << (status == 1 ? "a write failed" : "its report failed") << ")";
  }
  // Every reported write is there; whatever else is there is whole.
  int lost = 0, torn = 0;
  for (int n = 0; n <= committed + 1; ++n) {
    bool error = true;
    const String v = reg->GetString(HKCU, u"Kill", Name("V", n), u"", &error);
    lost += error && n <= committed;
    torn += !error && v != Payload(n);
  }
  EXPECT_EQ(lost, 0);
  EXPECT_EQ(torn, 0);
  EXPECT_GE(reg->GetLong(HKCU, u"Kill", u"Last", -1), committed);
  EXPECT_TRUE(reg->SetLong(HKCU, u"Kill", u"After", 1)) << "the store takes writes again";
}

}  // namespace
}  // namespace tsruntime
