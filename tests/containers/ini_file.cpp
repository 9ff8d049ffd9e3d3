// clsZKIniFile on real files and on strings: reading rules, the one-line rewrite, the
// load stamp and every error.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "containers/support.h"
#include "system/fs_fixture.h"
#include "tsruntime/clsZKIniFile.h"

namespace tsruntime {
namespace {

using namespace container_tests;

class IniFile : public testing::FsTest {
 protected:
  // A file of `content` (bytes as they stand) with an INI object on it.
  Ref<clsZKIniFile> OnFile(const std::string& name, const std::string& content) {
    Put(name, content);
    auto ini = New<clsZKIniFile>();
    ini->LetFullName(Path(name));
    return ini;
  }
  void SetTime(const std::string& name, time_t seconds, long nanoseconds) {
    const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, Native(name).c_str(), times, 0), 0);
  }
};

// What GetData gives: the value, or "(none)" when it returns False.
std::string Lookup(clsZKIniFile& ini, const char16_t* key, const char16_t* section = u"") {
  String value = u"stale";
  const bool found = ini.GetData(key, value, section);
  if (!found) return value.empty() ? "(none)" : "(none, yet ValueBuf set)";
  return ToUtf8(value);
}

const std::string kSample =
    "top = 1\r\n"
    "' a comment line\r\n"
    "[Main]\r\n"
    "name = value ' note\r\n"
    "key = a = b\r\n"
    "cont = abc _\r\n"
    "   def\r\n"
    "[Main] ' not a header\r\n"
    "after = still Main\r\n"
    "[[Other]]\r\n"
    "x=\t2\r\n"
    "[ main ]\r\n"
    "x = lower\r\n"
    "lf = 1\nnot = a line\r\n"
    "no separator here\r\n";

TEST_F(IniFile, LinesReadTheSameFromAFileAndAStringButForContinuations) {
  struct Case { const char* sentence; const char16_t *section, *key; std::string from_file, from_string; };
  const Case cases[] = {
      {"a key before any section", u"", u"top", "1", "1"},
      {"a comment is cut from the value", u"Main", u"name", "value", "value"},
      {"later separators belong to the value", u"Main", u"key", "a = b", "a = b"},
      {"a continued line joins in a file only", u"Main", u"cont", "abcdef", "abc _"},
      {"a header followed by a comment is no header", u"Main", u"after", "still Main", "still Main"},
      {"doubled brackets name the section", u"Other", u"x", "2", "2"},
      {"sections keep their case; blanks inside the brackets go", u"main", u"x", "lower", "lower"},
      {"a lone LF does not end a line, so no key follows it", u"main", u"lf", "1\nnot = a line", "1\nnot = a line"},
      {"a line without the separator is no key", u"main", u"no separator here", "(none)", "(none)"},
      {"the continuation is not a key of its own", u"Main", u"def", "(none)", "(none)"},
      {"a section is needed for keys inside it", u"", u"name", "(none)", "(none)"},
  };
  auto file = OnFile("sample.ini", kSample);
  auto text = New<clsZKIniFile>();
  text->LetSourceString(FromUtf8("\r\n \t" + kSample + " \t\r\n"));
  for (const Case& c : cases) {
    EXPECT_EQ(Lookup(*file, c.key, c.section), c.from_file) << c.sentence;
    EXPECT_EQ(Lookup(*text, c.key, c.section), c.from_string) << c.sentence;
  }
  EXPECT_EQ(ToUtf8(text->SourceString()), kSample.substr(0, kSample.size() - 2))
      << "the text held is the trimmed text, line for line";
}

// In string mode: separators apply from the next rebuild, PutData changes only the text
// held, and a refused SourceString falls back to the file.
TEST_F(IniFile, AStringIsReadWithTheSeparatorsOfItsLastRebuildAndRewrittenInPlace) {
  auto ini = OnFile("f.ini", "k = file");
  const String text = u"[S]\r\na: 1 = 2 # note ' not one\r\nb = 3";
  ini->LetSepData(u":"), ini->LetSepComment(u"#");
  ini->LetSourceString(text);
  EXPECT_EQ(Lookup(*ini, u"a", u"S"), "1 = 2");
  EXPECT_EQ(Lookup(*ini, u"b", u"S"), "(none)");
  ini->LetSepData(u"=");
  EXPECT_EQ(Lookup(*ini, u"a", u"S"), "1 = 2") << "the index stands until the text changes";
  ini->LetSourceString(text);
  EXPECT_EQ(Lookup(*ini, u"a: 1", u"S"), "2");
  EXPECT_TRUE(ini->PutData(u"b", u"\tnew ", u"S"));
  EXPECT_EQ(ini->SourceString(), u"[S]\r\na: 1 = 2 # note ' not one\r\nb = new");
  EXPECT_EQ(Lookup(*ini, u"b", u"S"), "new");
  EXPECT_EQ(Get("f.ini"), "k = file") << "nothing is written anywhere";
  EXPECT_NE(ErrorNumberOf([&] { ini->LetSourceString(u" "); }), 0);
  EXPECT_EQ(ini->SourceString(), u"[S]\r\na: 1 = 2 # note ' not one\r\nb = new") << "the old lines are kept";
  EXPECT_EQ(Lookup(*ini, u"k"), "file");
}

TEST_F(IniFile, PutDataRewritesOneLineAndKeepsEveryOtherByte) {
  const std::string before =
      "\xC0\xEB\xFF = cp1251 bytes\r\n"
      "[S]\r\n"
      "name = value ' note\r\n"
      "tabs =\t \told\t'  spaced comment\r\n"
      "cont = abc _\r\n"
      "  def\r\n"
      "stray\rCR and\nLF\tstay\r\n" + std::string(100000, 'z') + "\r\n" + "bare=\r\n";
  struct Case { const char* sentence; const char16_t* key; const char16_t* value; std::string old_line, new_line; };
  const Case cases[] = {
      {"the value goes, the comment follows one TAB", u"name", u"  x ", "name = value ' note", "name = x\t' note"},
      {"the blanks and TABs after the separator stay", u"tabs", u"new", "tabs =\t \told\t'  spaced comment", "tabs =\t \tnew\t'  spaced comment"},
      {"a continued line becomes one line", u"cont", u"y", "cont = abc _\r\n  def", "cont = y"},
      {"an empty value gets one", u"bare", u"v", "bare=", "bare=v"},
  };
  for (const Case& c : cases) {
    auto ini = OnFile("put.ini", before);
    EXPECT_TRUE(ini->PutData(c.key, c.value, u"S")) << c.sentence;
    std::string expected = before;
    expected.replace(expected.find(c.old_line), c.old_line.size(), c.new_line);
    expected.resize(expected.size() - 2);  // the text is trimmed of its line ends when read
    EXPECT_EQ(Get("put.ini"), expected) << c.sentence;
    const std::string stored = ToUtf8(c.key) == "name" ? "x" : ToUtf8(c.value);
    EXPECT_EQ(Lookup(*ini, c.key, u"S"), stored) << c.sentence << ", read by the same object";
    EXPECT_EQ(Lookup(*OnFile("put.ini", expected), c.key, u"S"), stored) << c.sentence;
  }
}

TEST_F(IniFile, TheStampDecidesWhenTheFileIsReadAgain) {
  // Same second, another nanosecond: a rewrite is noticed.
  auto ini = OnFile("a.ini", "k = 1");
  SetTime("a.ini", 1700000000, 100);
  EXPECT_EQ(Lookup(*ini, u"k"), "1");
  Put("a.ini", "k = 2");
  SetTime("a.ini", 1700000000, 200);
  EXPECT_EQ(Lookup(*ini, u"k"), "2") << "a rewrite within the same second";

  // A second file with the very same time is not read.
  Put("b.ini", "k = from b");
  SetTime("b.ini", 1700000000, 200);
  ini->LetFullName(Path("b.ini"));
  EXPECT_EQ(Lookup(*ini, u"k"), "2") << "the old index answers";
  SetTime("b.ini", 1700000001, 0);
  EXPECT_EQ(Lookup(*ini, u"k"), "from b");

  // After PutData the file it wrote is not read again.
  EXPECT_TRUE(ini->PutData(u"k", u"put"));
  struct stat info {};
  ASSERT_EQ(::stat(Native("b.ini").c_str(), &info), 0);
  Put("b.ini", "k = changed behind its back");
  SetTime("b.ini", info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
  EXPECT_EQ(Lookup(*ini, u"k"), "put");

  // A load that fails is not tried again until the file changes.
  auto empty = OnFile("empty.ini", " \r\n\t ");
  EXPECT_EQ(ErrorNumberOf([&] { Lookup(*empty, u"k"); }), xcZKERR_INI_FILELOAD);
  EXPECT_EQ(Lookup(*empty, u"k"), "(none)") << "the second call is quiet";
  Put("empty.ini", "k = now");
  SetTime("empty.ini", 1700000002, 0);
  EXPECT_EQ(Lookup(*empty, u"k"), "now");
}

TEST_F(IniFile, EveryErrorCarriesItsCodeSourceAndRussianText) {
  Put("readonly.ini", "[S]\r\nk = v", 0444);
  auto ok = OnFile("ok.ini", "[S]\r\nk = v"), gone = OnFile("gone.ini", "k = v");
  auto readonly = New<clsZKIniFile>(), fresh = New<clsZKIniFile>();
  readonly->LetFullName(Path("readonly.ini"));
  std::filesystem::remove(Native("gone.ini"));
  String buf;
  const String load = u"Ошибка загрузки INI-файла: ", missing = u"Ключ не найден: ";
  struct Case { const char* sentence; std::function<void()> action; int32_t code;
                const char16_t* member; String description; };
  const Case cases[] = {
      {"FullName of a missing file", [&] { fresh->LetFullName(Path("none.ini")); }, xcZKERR_INI_NOFILE, u"FullName", u"FullName = '" + Path("none.ini") + u"'"},
      {"FullName of a folder", [&] { fresh->LetFullName(Path()); }, xcZKERR_INI_NOFILE, u"FullName", u"FullName = '" + Path() + u"'"},
      {"SourceString of line ends and blanks", [&] { fresh->LetSourceString(u"\r\n \t\r\n"); }, xcZKERR_INI_NOFILE, u"SourceString", u"Попытка присвоить пустую строку в качестве источника ini-данных"},
      {"GetData with no file set", [&] { fresh->GetData(u"k", buf); }, xcZKERR_INI_FILELOAD, u"GetData", load},
      {"GetData of a file that is gone", [&] { gone->GetData(u"k", buf); }, xcZKERR_INI_FILELOAD, u"GetData", load + Path("gone.ini")},
      {"PutData of a file that is gone", [&] { gone->PutData(u"k", u"x"); }, xcZKERR_INI_FILELOAD, u"PutData", load + Path("gone.ini")},
      {"PutData of a missing key names GetData", [&] { ok->PutData(u"nokey", u"x", u"S"); }, xcZKERR_INI_KEYMISSING, u"GetData", missing + u"S.nokey"},
      {"PutData of a missing key before any section", [&] { ok->PutData(u"k", u"x"); }, xcZKERR_INI_KEYMISSING, u"GetData", missing + u"k"},
      {"PutData into a read-only file", [&] { readonly->PutData(u"k", u"x", u"S"); }, xcZKERR_INI_FILESAVE, u"PutData", u"Ошибка записи в INI-файл: " + Path("readonly.ini")},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ErrorOf(c.action), ErrorFields(c.code, u"ZKRuntimeLib.clsZKIniFile." + String(c.member),
                                             c.description, u"", 0))
        << c.sentence;
  }
  EXPECT_EQ(fresh->FullName(), u"") << "a refused FullName changes nothing";
  EXPECT_EQ(Get("readonly.ini"), "[S]\r\nk = v") << "the read-only file is intact";
  EXPECT_EQ(readonly->SourceString(), u"[S]\r\nk = x") << "but the line changed in memory";
  EXPECT_EQ(Lookup(*readonly, u"k", u"S"), "v") << "while the index keeps the old value";
}

}  // namespace
}  // namespace tsruntime
