// `tsrt reg export` and `tsrt reg import`: the registry's text export format, read into
// the store and written back byte for byte.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <sstream>

#include "commands.h"
#include "support/child_process.h"
#include "system/fs_fixture.h"
#include "tsruntime/clsZKRegistry.h"

namespace tsruntime {
namespace {

// The text as a registry editor saves it: UTF-16LE with a byte-order mark.
std::string Utf16File(const std::u16string& text) {
  std::string bytes = "\xFF\xFE";
  for (char16_t c : text) bytes += {static_cast<char>(c & 0xff), static_cast<char>(c >> 8)};
  return bytes;
}

// A sample file of tests/tools/registry_samples.
std::string Sample(const std::string& name) {
  std::ifstream in(std::string(TEST_SOURCE_DIR) + "/tools/registry_samples/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Runs tsrt in this process; "" when it succeeded, else the first line it wrote to standard error.
std::string Tsrt(std::vector<std::string> words) {
  std::ostringstream out, err;
  return tsrt::Run(words, out, err) == 0 ? "" : err.str().substr(0, err.str().find('\n'));
}

using RegistryFile = testing::FsTest;
constexpr int32_t kHkcu = HKEY_CURRENT_USER;

TEST_F(RegistryFile, SamplesOfEveryShapeImportToTheExpectedExportWhichImportsToItself) {
  // Each row's files are imported in their order into an empty store.
  const struct { const char* what; std::vector<std::string> imports; std::string key; std::string exported; } cases[] = {
      {"UTF-16 with a byte-order mark", {"every-shape.utf16.reg"}, "HKCU\\Software\\Tessaly", "every-shape.export.reg"},
      {"UTF-8 with a byte-order mark", {"every-shape.utf8.reg"}, "HKCU\\Software\\Tessaly", "every-shape.export.reg"},
      {"ANSI", {"every-shape.ansi.reg"}, "HKCU\\Software\\Tessaly", "every-shape.export.reg"},
      {"the older form in ANSI", {"regedit4.ansi.reg"}, "HKCU\\Software\\Tessaly Old", "regedit4.export.reg"},
      {"deletions, in file order", {"every-shape.utf16.reg", "deletions.utf16.reg"}, "HKCU\\Software\\Tessaly", "deletions.export.reg"},
  };
  int store = 0;
  for (const auto& c : cases) {
    setenv("TSRUNTIME_REGISTRY_DIR", Native("store" + std::to_string(++store)).c_str(), 1);
    for (const std::string& file : c.imports) {
      Put(file, Sample(file));
      ASSERT_EQ(Tsrt({"reg", "import", Native(file)}), "") << c.what << ": " << file;
    }
    for (const char* out : {"out.reg", "again.reg"}) {  // exported, then imported into a new store and exported again
      ASSERT_EQ(Tsrt({"reg", "export", c.key, Native(out)}), "") << c.what;
      EXPECT_EQ(Get(out), Sample(c.exported)) << c.what << ": " << out;
      setenv("TSRUNTIME_REGISTRY_DIR", Native("store" + std::to_string(++store)).c_str(), 1);
      ASSERT_EQ(Tsrt({"reg", "import", Native(out)}), "") << c.what;
    }
  }
  // The store now holds the deletions' result: the class reads what the file's types say.
  auto reg = New<clsZKRegistry>();
  const String key = u"SOFTWARE\\tessaly";
  EXPECT_EQ(reg->GetLong(kHkcu, key, u"Dword"), 42) << "hex(4) is a 32-bit integer";
  EXPECT_EQ(reg->GetString(kHkcu, key, u"Expand", u"not a string"), u"not a string") << "an expandable string is another type";
  EXPECT_EQ(reg->GetString(kHkcu, key + u"\\Fresh", u"Wide"), u"??") << "kept as Unicode, read through the ANSI code page";
}

TEST_F(RegistryFile, ExportsWhatTheClassWroteAndRefusesNamesNoLineCanHold) {
  auto reg = New<clsZKRegistry>();
  reg->SetString(kHkcu, u"Soft\\B", u"", u"");
  reg->SetString(kHkcu, u"Soft\\a", u"Line", u"1\r\n2");
  reg->SetString(kHkcu, u"Soft", u"Empty", u"");
  ASSERT_EQ(Tsrt({"reg", "export", "HKEY_CURRENT_USER\\Soft", Native("m.reg")}), "");
  EXPECT_EQ(Get("m.reg"), Utf16File(u"Windows Registry Editor Version 5.00\r\n\r\n"
                                    u"[HKEY_CURRENT_USER\\Soft]\r\n\"Empty\"=hex(1):\r\n\r\n"
                                    u"[HKEY_CURRENT_USER\\Soft\\a]\r\n\"Line\"=hex(1):31,00,0d,00,0a,00,32,00,00,00\r\n\r\n"
                                    u"[HKEY_CURRENT_USER\\Soft\\B]\r\n@=\"\"\r\n\r\n"))
      << "children in name order without regard to case; odd strings as hex(1)";
  reg->SetString(kHkcu, u"Names\\Value", u"two\nlines", u"v");
  reg->CreateSubKey(kHkcu, u"Names\\Key\\two\rlines\\below");
  const std::string refused = "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: a name below ";
  const struct { const char* what; std::string key; std::string error; } failures[] = {
      {"a value name with a line break", "HKCU\\Names\\Value", refused + "HKEY_CURRENT_USER\\Names\\Value holds a line break"},
      {"a key name with a line break", "HKCU\\Names\\Key", refused + "HKEY_CURRENT_USER\\Names\\Key holds a line break"},
      {"a missing key", "HKCU\\Missing", "Error 76 (ZKRuntimeLib): Path not found: HKCU\\Missing"},
      {"a handle that is not a key", "HKEY_DYN_DATA", "Error 76 (ZKRuntimeLib): Path not found: HKEY_DYN_DATA"},
  };
  for (const auto& c : failures) EXPECT_EQ(Tsrt({"reg", "export", c.key, Native("x.reg")}), c.error) << c.what;
  EXPECT_FALSE(Exists("x.reg"));
  EXPECT_EQ(Tsrt({"reg", "copy"}), "tsrt: reg takes export or import");
}

TEST_F(RegistryFile, BadFilesFailWithTheirLineNumberWithoutWritingAnything) {
  const std::u16string good = u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\X]\r\n\"A\"=dword:1\r\n";
  const std::string bad = "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: line ";
  // A file of "" is no file at all.
  const struct { const char* what; std::string file; std::string error; } cases[] = {
      {"a missing file", "", "Error 53 (ZKRuntimeLib): File not found: " + Native("bad.reg")},
      {"a file without the header", Utf16File(u"[HKEY_CURRENT_USER\\X]\r\n"), bad + "1: not a registry export"},
      {"a value with a broken number", Utf16File(good + u"\"B\"=dword:zz\r\n"), bad + "5: hexadecimal digits expected"},
      {"a byte list broken on its second line", Utf16File(good + u"\"B\"=hex:01,\\\r\n  0g\r\n"), bad + "6: a comma expected between bytes"},
      {"a byte list going on past the end", Utf16File(good + u"\"B\"=hex:01,\\"), bad + "5: the value goes on past the end of the file"},
      {"a key under an unknown root", Utf16File(good + u"[HKEY_NOWHERE\\X]\r\n"), bad + "5: the key does not start with a root key's name"},
      {"a key without its bracket", Utf16File(good + u"[HKCU\\Y  \r\n"), bad + "5: \"]\" expected at the end of the key"},
      {"a key with an empty level", Utf16File(good + u"[HKCU\\Y\\\\Z]\r\n"), bad + "5: the key's path has an empty or overlong level"},
      {"a root key deleted", Utf16File(good + u"[-HKCU]\r\n"), bad + "5: a root key cannot be deleted"},
      {"a value under a key being deleted", Utf16File(good + u"[-HKCU\\Y]\r\n\"C\"=dword:2\r\n"), bad + "6: a value under a key being deleted"},
      {"UTF-8 with a value that has no \"=\"", "\xEF\xBB\xBF" + ToUtf8(good) + "\"B\" dword:2\r\n", bad + "5: \"=\" expected after the value name"},
  };
  for (const auto& c : cases) {
    if (!c.file.empty()) Put("bad.reg", c.file);
    EXPECT_EQ(Tsrt({"reg", "import", Native("bad.reg")}), c.error) << c.what;
    EXPECT_EQ(New<clsZKRegistry>()->GetLong(kHkcu, u"X", u"A", -1), -1) << c.what << ": nothing was written";
  }
}

TEST_F(RegistryFile, AUsersImportTouchingMachineWideKeysWritesNothingAtAll) {
  if (!testing::CanRunAsOrdinaryUser()) GTEST_SKIP() << "needs root and setpriv";
  // The stores where they live for a user: the per-user one in the user's own config
  // folder, the machine-wide one root's (never written here: the user may not).
  const std::string home = Native("home");
  MakeFolder("home");
  ASSERT_EQ(chown(home.c_str(), testing::ThrowawayUid(), testing::ThrowawayUid()), 0);
  ASSERT_EQ(chmod(Native().c_str(), 0755), 0);
  Put("mixed.reg", "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Acme]\r\n\"User\"=\"u\"\r\n\r\n"
                   "[HKEY_LOCAL_MACHINE\\Software\\Acme]\r\n\"Machine\"=\"m\"\r\n");
  const auto tsrt = [&](std::vector<std::string> words) {
    words.insert(words.begin(), TSRT_PATH);
    const testing::EnvChanges user{{"TSRUNTIME_REGISTRY_DIR", std::nullopt}, {"HOME", home}, {"XDG_CONFIG_HOME", std::nullopt}};
    const std::string out = testing::RunProgram(words, user, testing::ThrowawayUid()).output;
    return out.substr(0, out.find('\n'));
  };
  EXPECT_EQ(tsrt({"reg", "import", Native("mixed.reg")}), "Error 70 (ZKRuntimeLib): Permission denied: " + Native("mixed.reg"));
  EXPECT_EQ(tsrt({"reg", "export", "HKCU\\Software", home + "/out.reg"}), "Error 76 (ZKRuntimeLib): Path not found: HKCU\\Software")
      << "the per-user part was not written either";
}

}  // namespace
}  // namespace tsruntime
