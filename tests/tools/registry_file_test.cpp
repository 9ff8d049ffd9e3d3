// `tsrt reg export` and `tsrt reg import`: the registry's text export format, read into
// the store and written back byte for byte.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "commands.h"
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

const std::u16string kExport =
    u"Windows Registry Editor Version 5.00\r\n"
    u"\r\n"
    u"[HKEY_CURRENT_USER\\Software\\Tessaly]\r\n"
    u"@=\"по умолчанию\"\r\n"
    u"\"Path\"=\"C:\\\\Program Files\\\\\\\"Tessaly\\\"\"\r\n"
    u"\"Count\"=dword:0000002a\r\n"
    u"\"Negative\"=dword:ffffffff\r\n"
    u"\"Blob\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\r\n"
    u"  16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,2c,2d,2e,\\\r\n"
    u"  2f,30,31\r\n"
    u"\"Empty\"=hex:\r\n"
    u"\"Expand\"=hex(2):25,00,54,00,45,00,4d,00,50,00,25,00,00,00\r\n"
    u"\"Wide\"=\"日本\"\r\n"
    u"\r\n"
    u"[HKEY_CURRENT_USER\\Software\\Tessaly\\alpha]\r\n"
    u"\r\n"
    u"[HKEY_CURRENT_USER\\Software\\Tessaly\\Окно]\r\n"
    u"\"Ширина\"=dword:00000400\r\n"
    u"\r\n";

TEST_F(RegistryFile, AnImportedExportReadsThroughTheClassAndExportsToTheSameBytes) {
  Write("in.reg", Utf16File(kExport));
  ASSERT_EQ(Tsrt({"reg", "import", Path("in.reg")}), "");

  auto reg = New<clsZKRegistry>();
  const int32_t hkcu = HKEY_CURRENT_USER;
  EXPECT_EQ(reg->GetString(hkcu, u"Software\\Tessaly", u""), u"по умолчанию");
  EXPECT_EQ(reg->GetString(hkcu, u"SOFTWARE\\tessaly", u"path"), u"C:\\Program Files\\\"Tessaly\"");
  EXPECT_EQ(reg->GetLong(hkcu, u"Software\\Tessaly", u"Count"), 42);
  EXPECT_EQ(reg->GetLong(hkcu, u"Software\\Tessaly", u"Negative"), -1);
  EXPECT_EQ(reg->GetBinary(hkcu, u"Software\\Tessaly", u"Blob").bytes().size(), 50u);
  EXPECT_EQ(reg->GetString(hkcu, u"Software\\Tessaly", u"Expand", u"not a string"), u"not a string")
      << "an expandable string is another type";
  EXPECT_EQ(reg->GetString(hkcu, u"Software\\Tessaly", u"Wide"), u"??")
      << "the store keeps Unicode; the class reads through the ANSI code page";
  EXPECT_EQ(reg->GetLong(hkcu, u"Software\\Tessaly\\окно", u"ширина"), 1024);

  ASSERT_EQ(Tsrt({"reg", "export", "HKCU\\software\\TESSALY", Path("out.reg")}), "");
  EXPECT_EQ(Read("out.reg"), Utf16File(kExport)) << "the keys keep their first spelling";
}

TEST_F(RegistryFile, ExportsWhatTheClassWroteAndImportsTheOlderAnsiForm) {
  auto reg = New<clsZKRegistry>();
  const int32_t hklm = HKEY_LOCAL_MACHINE;
  reg->SetString(hklm, u"Soft\\B", u"", u"");
  reg->SetString(hklm, u"Soft\\a", u"Line", u"1\r\n2");
  reg->SetString(hklm, u"Soft", u"Empty", u"");
  ASSERT_EQ(Tsrt({"reg", "export", "HKEY_LOCAL_MACHINE\\Soft", Path("m.reg")}), "");
  const std::u16string expected =
      u"Windows Registry Editor Version 5.00\r\n\r\n"
      u"[HKEY_LOCAL_MACHINE\\Soft]\r\n\"Empty\"=hex(1):\r\n\r\n"
      u"[HKEY_LOCAL_MACHINE\\Soft\\a]\r\n\"Line\"=hex(1):31,00,0d,00,0a,00,32,00,00,00\r\n\r\n"
      u"[HKEY_LOCAL_MACHINE\\Soft\\B]\r\n@=\"\"\r\n\r\n";
  EXPECT_EQ(Read("m.reg"), Utf16File(expected))
      << "children in name order without regard to case; odd strings as hex(1)";

  Write("old.reg",
        "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Old]\r\n\"\xcf\xf3\xf2\xfc\"=\"\xe4\xe0\"\r\n");
  ASSERT_EQ(Tsrt({"reg", "import", Path("old.reg")}), "");
  EXPECT_EQ(reg->GetString(HKEY_CURRENT_USER, u"Old", u"Путь"), u"да");
}

TEST_F(RegistryFile, BadFilesAndMissingKeysFailWithoutWritingAnything) {
  const struct {
    const char* what;
    std::string file;  // "" for no file at all
    std::string error;
  } cases[] = {
      {"a missing file", "", "Error 53 (ZKRuntimeLib): File not found: "},
      {"a file without the header", Utf16File(u"[HKEY_CURRENT_USER\\X]\r\n"),
       "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: line 1: not a registry "
       "export"},
      {"a value with a broken number",
       Utf16File(u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\X]\r\n"
                 u"\"A\"=dword:1\r\n\"B\"=dword:zz\r\n"),
       "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: line 5: hexadecimal "
       "digits expected"},
      {"a key under an unknown root",
       Utf16File(u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_NOWHERE\\X]\r\n"),
       "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: line 3: the key does not "
       "start with a root key's name"},
      {"a deletion", Utf16File(u"REGEDIT4\r\n[-HKEY_CURRENT_USER\\X]\r\n"),
       "Error 5 (ZKRuntimeLib): Invalid procedure call or argument: line 2: deleting keys is "
       "not supported"},
  };
  for (const auto& c : cases) {
    if (!c.file.empty()) Write("bad.reg", c.file);
    const std::string path = c.file.empty() ? Path("none.reg") : Path("bad.reg");
    EXPECT_EQ(Tsrt({"reg", "import", path}), c.error + (c.file.empty() ? path : "")) << c.what;
    EXPECT_EQ(New<clsZKRegistry>()->CreateSubKey(HKEY_CURRENT_USER, u"X"), true);
    EXPECT_EQ(New<clsZKRegistry>()->GetLong(HKEY_CURRENT_USER, u"X", u"A", -1), -1)
        << c.what << ": nothing of the file was written";
  }
  EXPECT_EQ(Tsrt({"reg", "export", "HKCU\\Missing", Path("x.reg")}),
            "Error 76 (ZKRuntimeLib): Path not found: HKCU\\Missing");
  EXPECT_EQ(Tsrt({"reg", "export", "HKEY_DYN_DATA", Path("x.reg")}),
            "Error 76 (ZKRuntimeLib): Path not found: HKEY_DYN_DATA");
  EXPECT_FALSE(std::filesystem::exists(Path("x.reg")));
  EXPECT_EQ(Tsrt({"reg", "copy"}), "tsrt: reg takes export or import");
}

}  // namespace
}  // namespace tsruntime
