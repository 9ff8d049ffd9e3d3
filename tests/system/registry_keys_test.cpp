// clsZKRegistry keys: creation, deletion and the platform's rules for paths and roots;
// where the store lives and who may write it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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

// What a user other than root managed: bit 1 set, 2 create, 4 delete were allowed; 8 the
// read of what root wrote failed.
int MachineWideAttempts(bool root_wrote) {
  auto r = New<clsZKRegistry>();
  int failures = 0;
  if (r->SetString(HKEY_LOCAL_MACHINE, u"Soft", u"Name", u"user")) failures |= 1;
  if (r->CreateSubKey(HKEY_CLASSES_ROOT, u"New")) failures |= 2;
  if (r->DeleteKey(HKEY_LOCAL_MACHINE, u"Soft", u"Name")) failures |= 4;
  if (root_wrote && r->GetString(HKEY_LOCAL_MACHINE, u"Soft", u"Name") != u"machine") {
    failures |= 8;
  }
  return failures;
}

TEST_F(RegistryKeys, OnlyRootWritesMachineWideKeysWhileOthersStillReadThem) {
  if (geteuid() != 0) {
    EXPECT_EQ(MachineWideAttempts(false), 0);
    return;
  }
  // As root: write, then try again as nobody in a child.
  ASSERT_TRUE(reg->SetString(HKEY_LOCAL_MACHINE, u"Soft", u"Name", u"machine"));
  ASSERT_EQ(chmod(dir().c_str(), 0755), 0);
  const pid_t child = fork();
  if (child == 0) {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(16);
    _exit(MachineWideAttempts(true));
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << "see MachineWideAttempts; 16: could not drop root";
  EXPECT_EQ(reg->GetString(HKEY_LOCAL_MACHINE, u"Soft", u"Name"), u"machine");
}

TEST_F(RegistryKeys, TheStoreLivesInTheUsersConfigFolderUnlessMoved) {
  struct Place {
    const char* what;
    const char* xdg;   // XDG_CONFIG_HOME below the scratch folder, or null to unset it
    const char* file;  // where the per-user database appears
  };
  const Place places[] = {
      {"under XDG_CONFIG_HOME", "xdg", "xdg/tsruntime/registry.db"},
      {"under ~/.config without it", nullptr, "home/.config/tsruntime/registry.db"},
  };
  const char* old_home = getenv("HOME");
  const std::string saved_home = old_home ? old_home : "";
  unsetenv("TSRUNTIME_REGISTRY_DIR");
  for (const Place& p : places) {
    setenv("HOME", (dir() + "/home").c_str(), 1);
    if (p.xdg) {
      setenv("XDG_CONFIG_HOME", (dir() + "/" + p.xdg).c_str(), 1);
    } else {
      unsetenv("XDG_CONFIG_HOME");
    }
    EXPECT_TRUE(New<clsZKRegistry>()->SetString(HKCU, u"K", u"N", u"v")) << p.what;
    struct stat st {};
    ASSERT_EQ(stat((dir() + "/" + p.file).c_str(), &st), 0) << p.what;
    EXPECT_EQ(st.st_mode & 0777, 0600u) << p.what;
  }
  unsetenv("XDG_CONFIG_HOME");
  setenv("HOME", saved_home.c_str(), 1);
}

}  // namespace
}  // namespace tsruntime
