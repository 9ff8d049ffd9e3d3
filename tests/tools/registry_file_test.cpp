// `tsrt reg export` and `tsrt reg import`: the registry's text export format, read into
// the store and written back byte for byte.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "commands.h"
#include "support/child_process.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/clsZKRegistry.h"

namespace tsruntime {
namespace {

// The text as a registry editor saves it: UTF-16LE with a byte-order mark.
std::string Utf16File(const std::u16string& text) {
  std::string bytes = "\xFF\xFE";
  for (char16_t c : text) {
    bytes += static_cast<char>(c & 0xff);
    bytes += static_cast<char>(c >> 8);
  }
  return bytes;
}

class RegistryFile : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/tsrt-regfile-XXXXXX";
    dir_ = mkdtemp(pattern);
    setenv("TSRUNTIME_REGISTRY_DIR", dir_.c_str(), 1);
  }
  void TearDown() override {
    unsetenv("TSRUNTIME_REGISTRY_DIR");
    std::filesystem::remove_all(dir_);
  }
  std::string Path(const std::string& name) const { return dir_ + "/" + name; }
  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
  }
  std::string Read(const std::string& name) const {
    std::ifstream in(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  // Runs tsrt; "" when it succeeded, else the first line it wrote to standard error.
  std::string Tsrt(std::vector<std::string> words) const {
    std::ostringstream out, err;
    const int code = tsrt::Run(words, out, err);
    return code == 0 ? "" : err.str().substr(0, err.str().find('\n'));
  }

 private:
  std::string dir_;
};

// A sample file of tests/tools/registry_samples.
std::string Sample(const std::string& name) {
  std::ifstream in(std::string(TEST_SOURCE_DIR) + "/tools/registry_samples/" + name,
                   std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST_F(RegistryFile, SamplesOfEveryShapeImportToTheExpectedExportWhichImportsToItself) {
  const struct {
    const char* what;
    std::vector<std::string> imports;  // in this order, into an empty store
    std::string key;
    std::string exported;
  } cases[] = {
      {"UTF-16 with a byte-order mark", {"every-shape.utf16.reg"}, "HKCU\\Software\\Tessaly",
       "every-shape.export.reg"},
      {"UTF-8 with a byte-order mark", {"every-shape.utf8.reg"}, "HKCU\\Software\\Tessaly",
       "every-shape.export.reg"},
      {"ANSI", {"every-shape.ansi.reg"}, "HKCU\\Software\\Tessaly", "every-shape.export.reg"},
      {"the older form in ANSI", {"regedit4.ansi.reg"}, "HKCU\\Software\\Tessaly Old",
       "regedit4.export.reg"},
      {"deletions, in file order", {"every-shape.utf16.reg", "deletions.utf16.reg"},
       "HKCU\\Software\\Tessaly", "deletions.export.reg"},
  };
  int store = 0;
  for (const auto& c : cases) {
    setenv("TSRUNTIME_REGISTRY_DIR", Path("store" + std::to_string(++store)).c_str(), 1);
    for (const std::string& file : c.imports) {
      Write(file, Sample(file));
      ASSERT_EQ(Tsrt({"reg", "import", Path(file)}), "") << c.what << ": " << file;
    }
    ASSERT_EQ(Tsrt({"reg", "export", c.key, Path("out.reg")}), "") << c.what;
    EXPECT_EQ(Read("out.reg"), Sample(c.exported)) << c.what;

    setenv("TSRUNTIME_REGISTRY_DIR", Path("store" + std::to_string(++store)).c_str(), 1);
    ASSERT_EQ(Tsrt({"reg", "import", Path("out.reg")}), "") << c.what;
    ASSERT_EQ(Tsrt({"reg", "export", c.key, Path("again.reg")}), "") << c.what;
    EXPECT_EQ(Read("again.reg"), Sample(c.exported)) << c.what << ": exported again";
  }
}

TEST_F(RegistryFile, ImportedValuesReadThroughTheClass) {
  for (const char* file : {"every-shape.utf16.reg", "deletions.utf16.reg"}) {
    Write(file, Sample(file));
    ASSERT_EQ(Tsrt({"reg", "import", Path(file)}), "");
  }
  auto reg = New<clsZKRegistry>();
  const int32_t hkcu = HKEY_CURRENT_USER;
  const String key = u"Software\\Tessaly";
  bool error = false;
  EXPECT_EQ(reg->GetString(hkcu, u"SOFTWARE\\tessaly", u"path"), u"C:\\Program Files\\\"Tessaly\"");
  EXPECT_EQ(reg->GetLong(hkcu, key, u"Count"), 1) << "rewritten by the second file";
  EXPECT_EQ(reg->GetLong(hkcu, key, u"Big"), -1);
  EXPECT_EQ(reg->GetLong(hkcu, key, u"Dword"), 42) << "hex(4) is a 32-bit integer";
  EXPECT_EQ(reg->GetString(hkcu, key, u"Text"), u"A") << "hex(1) is a string";
  EXPECT_EQ(reg->GetString(hkcu, key, u"Expand", u"not a string"), u"not a string")
      << "an expandable string is another type";
  EXPECT_EQ(reg->GetBinary(hkcu, key, u"Binary").bytes(), (std::vector<uint8_t>{1, 2}));
  EXPECT_TRUE(reg->GetBinary(hkcu, key, u"Blob", &error).bytes().empty() && error) << "deleted";
  EXPECT_EQ(reg->GetString(hkcu, key, u""), u"") << "the default value was deleted";
  EXPECT_EQ(reg->GetString(hkcu, key + u"\\Fresh", u"Wide"), u"??")
      << "the store keeps Unicode; the class reads through the ANSI code page";
  EXPECT_EQ(reg->GetLong(hkcu, key + u"\\окно", u"ширина", -1), -1) << "the key was deleted";
  EXPECT_EQ(reg->GetString(hkcu, key + u"\\окно\\inner", u"X"), u"y");
}

TEST_F(RegistryFile, ExportsWhatTheClassWroteAndRefusesNamesNoLineCanHold) {
  auto reg = New<clsZKRegistry>();
  const int32_t hkcu = HKEY_CURRENT_USER;
  reg->SetString(hkcu, u"Soft\\B", u"", u"");
  reg->SetString(hkcu, u"Soft\\a", u"Line", u"1\r\n2");
  reg->SetString(hkcu, u"Soft", u"Empty", u"");
  ASSERT_EQ(Tsrt({"reg", "export", "HKEY_CURRENT_USER\\Soft", Path("m.reg")}), "");
  const std::u16string expected =
      u"Windows Registry Editor Version 5.00\r\n\r\n"
      u"[HKEY_CURRENT_USER\\Soft]\r\n\"Empty\"=hex(1):\r\n\r\n"
      u"[HKEY_CURRENT_USER\\Soft\\a]\r\n\"Line\"=hex(1):31,00,0d,00,0a,00,32,00,00,00\r\n\r\n"
      u"[HKEY_CURRENT_USER\\Soft\\B]\r\n@=\"\"\r\n\r\n";
  EXPECT_EQ(Read("m.reg"), Utf16File(expected))
      << "children in name order without regard to case; odd strings as hex(1)";

  const std::string refused = "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: ";
  const struct { const char* what; std::string key; std::string error; } failures[] = {
      {"a value name with a line break", "HKCU\\Names\\Value",
       refused + "a name below HKEY_CURRENT_USER\\Names\\Value holds a line break"},
      {"a key name with a line break", "HKCU\\Names\\Key",
       refused + "a name below HKEY_CURRENT_USER\\Names\\Key holds a line break"},
      {"a missing key", "HKCU\\Missing", "Error 76 (ZKRuntimeLib): Path not found: HKCU\\Missing"},
      {"a handle that is not a key", "HKEY_DYN_DATA",
       "Error 76 (ZKRuntimeLib): Path not found: HKEY_DYN_DATA"},
  };
  reg->SetString(hkcu, u"Names\\Value", u"two\nlines", u"v");
  reg->CreateSubKey(hkcu, u"Names\\Key\\two\rlines\\below");
  for (const auto& c : failures) {
    EXPECT_EQ(Tsrt({"reg", "export", c.key, Path("x.reg")}), c.error) << c.what;
  }
  EXPECT_FALSE(std::filesystem::exists(Path("x.reg")));
  EXPECT_EQ(Tsrt({"reg", "copy"}), "tsrt: reg takes export or import");
}

TEST_F(RegistryFile, BadFilesFailWithTheirLineNumberWithoutWritingAnything) {
  const std::u16string good =
      u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\X]\r\n\"A\"=dword:1\r\n";
  const std::string bad = "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: ";
  const struct {
    const char* what;
    std::string file;  // "" for no file at all
    std::string error;
  } cases[] = {
      {"a missing file", "", "Error 53 (ZKRuntimeLib): File not found: "},
      {"a file without the header", Utf16File(u"[HKEY_CURRENT_USER\\X]\r\n"),
       bad + "line 1: not a registry export"},
      {"a value with a broken number", Utf16File(good + u"\"B\"=dword:zz\r\n"),
       bad + "line 5: hexadecimal digits expected"},
      {"a byte list broken on its second line", Utf16File(good + u"\"B\"=hex:01,\\\r\n  0g\r\n"),
       bad + "line 6: a comma expected between bytes"},
      {"a byte list going on past the end", Utf16File(good + u"\"B\"=hex:01,\\"),
       bad + "line 5: the value goes on past the end of the file"},
      {"a key under an unknown root", Utf16File(good + u"[HKEY_NOWHERE\\X]\r\n"),
       bad + "line 5: the key does not start with a root key's name"},
      {"a key without its bracket", Utf16File(good + u"[HKCU\\Y  \r\n"),
       bad + "line 5: \"]\" expected at the end of the key"},
      {"a key with an empty level", Utf16File(good + u"[HKCU\\Y\\\\Z]\r\n"),
       bad + "line 5: the key's path has an empty or overlong level"},
      {"a root key deleted", Utf16File(good + u"[-HKCU]\r\n"),
       bad + "line 5: a root key cannot be deleted"},
      {"a value under a key being deleted",
       Utf16File(good + u"[-HKEY_CURRENT_USER\\Y]\r\n\"C\"=dword:2\r\n"),
       bad + "line 6: a value under a key being deleted"},
      {"UTF-8 with a value that has no \"=\"", "\xEF\xBB\xBF" + ToUtf8(good) + "\"B\" dword:2\r\n",
       bad + "line 5: \"=\" expected after the value name"},
  };
  for (const auto& c : cases) {
    if (!c.file.empty()) Write("bad.reg", c.file);
    const std::string path = c.file.empty() ? Path("none.reg") : Path("bad.reg");
    EXPECT_EQ(Tsrt({"reg", "import", path}), c.error + (c.file.empty() ? path : "")) << c.what;
    EXPECT_EQ(New<clsZKRegistry>()->GetLong(HKEY_CURRENT_USER, u"X", u"A", -1), -1)
        << c.what << ": nothing of the file was written";
  }
}

TEST_F(RegistryFile, AUsersImportTouchingMachineWideKeysWritesNothingAtAll) {
  if (!testing::CanRunAsOrdinaryUser()) GTEST_SKIP() << "needs root and setpriv";
  // The stores where they live for a user: the per-user one in the user's own config
  // folder, the machine-wide one root's (never written here: the user may not).
  const std::string home = Path("home");
  ASSERT_EQ(mkdir(home.c_str(), 0700), 0);
  ASSERT_EQ(chown(home.c_str(), testing::ThrowawayUid(), testing::ThrowawayUid()), 0);
  ASSERT_EQ(chmod(Path("").c_str(), 0755), 0);
  Write("mixed.reg",
        "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Acme]\r\n\"User\"=\"u\"\r\n\r\n"
        "[HKEY_LOCAL_MACHINE\\Software\\Acme]\r\n\"Machine\"=\"m\"\r\n");
  const testing::EnvChanges user{{"TSRUNTIME_REGISTRY_DIR", std::nullopt},
                                 {"HOME", home},
                                 {"XDG_CONFIG_HOME", std::nullopt}};
  const auto tsrt = [&](std::vector<std::string> words) {
    words.insert(words.begin(), TSRT_PATH);
    const testing::ChildResult r = testing::RunProgram(words, user, testing::ThrowawayUid());
    return r.output.substr(0, r.output.find('\n'));
  };
  EXPECT_EQ(tsrt({"reg", "import", Path("mixed.reg")}),
            "Error 70 (ZKRuntimeLib): Permission denied: " + Path("mixed.reg"));
  EXPECT_EQ(tsrt({"reg", "export", "HKCU\\Software", home + "/out.reg"}),
            "Error 76 (ZKRuntimeLib): Path not found: HKCU\\Software")
      << "the per-user part was not written either";
}

}  // namespace
}  // namespace tsruntime
