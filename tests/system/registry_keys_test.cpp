// clsZKRegistry keys: creation, deletion and the platform's rules for paths and roots;
// where the store lives and who may write it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "support/child_process.h"
#include "support/outcome.h"
#include "system/registry_support.h"

namespace tsruntime {
namespace {

using testing::Case;

constexpr int32_t HKCU = HKEY_CURRENT_USER;

std::string Said(bool b) { return b ? "True" : "False"; }

class RegistryKeys : public testing::RegistryTest {
 protected:
  // Whether the key exists: its default value reads without an error only then.
  std::string Exists(const String& path, int32_t root = HKCU) {
    bool error = false;
    reg->GetString(root, path, u"", u"", &error);
    return error ? "missing" : "present";
  }
};

TEST_F(RegistryKeys, CreateAndDeleteFollowThePlatformRules) {
  const Case cases[] = {
      {"creating a key creates every missing level",
       [&] {
         const std::string done = Said(reg->CreateSubKey(HKCU, u"A\\B\\C"));
         return done + " " + Exists(u"A\\B");
       },
       "True present"},
      {"creating an existing key opens it", [&] { return Said(reg->CreateSubKey(HKCU, u"A")); },
       "True"},
      {"keys are found in any case, Cyrillic included",
       [&] {
         reg->CreateSubKey(HKCU, u"Настройки\\Окно");
         return Exists(u"НАСТРОЙКИ\\окНО");
       },
       "present"},
      {"a path that starts with a backslash is refused",
       [&] { return Said(reg->CreateSubKey(HKCU, u"\\Lead")); }, "False"},
      {"a path with an empty level is refused",
       [&] {
         const std::string done = Said(reg->CreateSubKey(HKCU, u"X\\\\Y"));
         return done + " " + Exists(u"X");
       },
       "False missing"},
      {"one trailing backslash is ignored",
       [&] {
         const std::string done = Said(reg->CreateSubKey(HKCU, u"Trail\\"));
         return done + " " + Exists(u"Trail");
       },
       "True present"},
      {"an empty path is the root key itself",
       [&] {
         reg->SetString(HKCU, u"", u"AtRoot", u"yes");
         return testing::U8(reg->GetString(HKCU, u"", u"AtRoot"));
       },
       "yes"},
      {"a setter creates a missing key first",
       [&] {
         const std::string done = Said(reg->SetLong(HKCU, u"New\\Deep", u"N", 1));
         return done + " " + Exists(u"New");
       },
       "True present"},
      {"a key with subkeys is not deleted",
       [&] {
         const std::string done = Said(reg->DeleteKey(HKCU, u"A\\B"));
         return done + " " + Exists(u"A\\B\\C");
       },
       "False present"},
      {"a key without subkeys is deleted, its parent stays",
       [&] {
         const std::string done = Said(reg->DeleteKey(HKCU, u"a\\b\\c"));
         return done + " " + Exists(u"A\\B\\C") + " " + Exists(u"A\\B");
       },
       "True missing present"},
      {"a missing key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"Nope")); },
       "False"},
      {"the root key cannot be deleted", [&] { return Said(reg->DeleteKey(HKCU, u"")); }, "False"},
      {"deleting a value leaves the key and its other values",
       [&] {
         reg->SetString(HKCU, u"V", u"One", u"1");
         reg->SetString(HKCU, u"V", u"Two", u"2");
         const std::string done = Said(reg->DeleteKey(HKCU, u"V", u"one"));
         return done + " " + Exists(u"V") + " " + testing::U8(reg->GetString(HKCU, u"V", u"Two"));
       },
       "True present 2"},
      {"a missing value cannot be deleted",
       [&] { return Said(reg->DeleteKey(HKCU, u"V", u"One")); }, "False"},
      {"a value of a missing key cannot be deleted",
       [&] { return Said(reg->DeleteKey(HKCU, u"Nope", u"One")); }, "False"},
      {"a status sum tells CreateSubKey's result, and it fails for a handle that is no root",
       [&] { return Said(reg->CreateSubKey(12345, u"K")); }, "False"},
      {"performance data is not a key of the store",
       [&] { return Said(reg->SetString(HKEY_PERFORMANCE_DATA, u"K", u"N", u"v")); }, "False"},
      {"neither is dynamic data", [&] { return Exists(u"", HKEY_DYN_DATA); }, "missing"},
      {"a machine-wide root is a store of its own",
       [&] {
         reg->SetLong(HKEY_LOCAL_MACHINE, u"Soft", u"N", 1);
         return Exists(u"Soft", HKEY_LOCAL_MACHINE) + " " + Exists(u"Soft");
       },
       "present missing"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.what;
}

// tsrt calling a registry member, in a process of its own; what it printed, or the
// failure with its output.
std::string Registry(const std::vector<std::string>& call, const testing::EnvChanges& env,
                     std::optional<uid_t> uid = std::nullopt) {
  std::vector<std::string> argv{TSRT_PATH, "call", "clsZKRegistry"};
  argv.insert(argv.end(), call.begin(), call.end());
  const testing::ChildResult r = testing::RunProgram(argv, env, uid);
  return r.exit_code == 0 ? r.output : "exit " + std::to_string(r.exit_code) + ": " + r.output;
}

const std::string kHKLM = std::to_string(HKEY_LOCAL_MACHINE);
const std::string kHKCR = std::to_string(HKEY_CLASSES_ROOT);

TEST_F(RegistryKeys, UsersReadWhatRootWroteAfterItsProcessEndedAndWriteNothingMachineWide) {
  if (!testing::CanRunAsOrdinaryUser()) GTEST_SKIP() << "needs root and setpriv";
  ASSERT_EQ(chmod(dir().c_str(), 0755), 0);
  // The installer runs under a strict umask; the store folder is the library's to make.
  const testing::EnvChanges env{{"TSRUNTIME_REGISTRY_DIR", dir() + "/store"}};
  const mode_t umask_before = umask(077);
  const std::string installed =
      Registry({"SetString", kHKLM, R"("Software\Acme")", R"("Path")", R"("/opt/acme")"}, env);
  umask(umask_before);
  ASSERT_EQ(installed, "True\n");

  const struct {
    const char* what;
    std::vector<std::string> call;
    std::string printed;
  } as_user[] = {
      {"reads the value", {"GetString", kHKLM, R"("Software\Acme")", R"("Path")", "", "False"},
       "\"/opt/acme\"\nblnError = False\n"},
      {"cannot change it", {"SetString", kHKLM, R"("Software\Acme")", R"("Path")", R"("x")"},
       "False\n"},
      {"cannot create a key", {"CreateSubKey", kHKCR, R"("New")"}, "False\n"},
      {"cannot delete the value", {"DeleteKey", kHKLM, R"("Software\Acme")", R"("Path")"},
       "False\n"},
  };
  for (const auto& c : as_user) {
    EXPECT_EQ(Registry(c.call, env, testing::ThrowawayUid()), c.printed) << c.what;
  }
  EXPECT_EQ(Registry({"GetString", kHKLM, R"("Software\Acme")", R"("Path")"}, env),
            "\"/opt/acme\"\n");
}

TEST_F(RegistryKeys, TheStoreIsMadeWithItsOwnModesWhereverItLivesWhateverTheUmask) {
  struct Level {
    const char* path;  // below the scratch folder
    mode_t mode;
  };
  const struct {
    const char* what;
    mode_t umask;
    int32_t root;
    testing::EnvChanges env;  // relative values are below the scratch folder
    std::vector<Level> made;
  } cases[] = {
      {"under XDG_CONFIG_HOME", 022, HKCU,
       {{"XDG_CONFIG_HOME", "xdg"}, {"TSRUNTIME_REGISTRY_DIR", std::nullopt}},
       {{"xdg", 0700}, {"xdg/tsruntime", 0700}, {"xdg/tsruntime/registry.db", 0600}}},
      {"under ~/.config without it", 022, HKCU,
       {{"HOME", "home"}, {"XDG_CONFIG_HOME", std::nullopt}, {"TSRUNTIME_REGISTRY_DIR", std::nullopt}},
       {{"home/.config", 0700}, {"home/.config/tsruntime", 0700},
        {"home/.config/tsruntime/registry.db", 0600}}},
      {"per-user, moved, umask 000", 0, HKCU, {{"TSRUNTIME_REGISTRY_DIR", "u/store"}},
       {{"u", 0700}, {"u/store", 0700}, {"u/store/user.db", 0600}}},
      {"machine-wide, moved, umask 077", 077, HKEY_LOCAL_MACHINE,
       {{"TSRUNTIME_REGISTRY_DIR", "m/store"}},
       {{"m", 0755}, {"m/store", 0755}, {"m/store/machine.db", 0644}}},
  };
  ASSERT_EQ(mkdir((dir() + "/home").c_str(), 0755), 0);
  for (const auto& c : cases) {
    std::map<std::string, std::optional<std::string>> before;
    for (const auto& [name, value] : c.env) {
      const char* old = getenv(name.c_str());
      before[name] = old ? std::optional<std::string>(old) : std::nullopt;
      if (value) {
        setenv(name.c_str(), (dir() + "/" + *value).c_str(), 1);
      } else {
        unsetenv(name.c_str());
      }
    }
    const mode_t umask_before = umask(c.umask);
    EXPECT_TRUE(New<clsZKRegistry>()->SetString(c.root, u"K", u"N", u"v")) << c.what;
    umask(umask_before);
    for (const auto& [name, value] : before) {
      if (value) {
        setenv(name.c_str(), value->c_str(), 1);
      } else {
        unsetenv(name.c_str());
      }
    }
    for (const Level& level : c.made) {
      struct stat st {};
      ASSERT_EQ(stat((dir() + "/" + level.path).c_str(), &st), 0) << c.what << ": " << level.path;
      EXPECT_EQ(st.st_mode & 0777, level.mode) << c.what << ": " << level.path;
    }
  }
}

}  // namespace
}  // namespace tsruntime
