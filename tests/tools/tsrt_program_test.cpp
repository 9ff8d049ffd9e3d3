// The built `tsrt` program run as a user runs it, on the library's own classes: output,
// written-back arguments, errors and exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

struct Outcome { int code; std::string out, err; };

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(in), {});
  std::remove(path.c_str());
  return text;
}

// Runs `tsrt ARGS` through the shell, as a user types it; the output goes through files,
// standard error into its own unless `merged`.
Outcome RunTsrt(const std::string& args, const std::string& environment = "",
                bool merged = false) {
  const std::string out = testing::TempDir() + "tsrt-" + std::to_string(getpid()) + ".out";
  const std::string command = environment + std::string(TSRT_PATH) + " " + args + " >" + out +
                              (merged ? " 2>&1" : " 2>" + out + "2");
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(out), Slurp(out + "2")};
}

// A call prints its result, then each argument written back, with status 0. Status 1
// prints the raised error exactly, after what ran before it; status 2 names the fault,
// then the usage. On Error Resume Next keeps each failure in Err.
TEST(Tsrt, PrintsResultsWrittenBackArgumentsAndFailuresWithTheirStatus) {
  const std::string k438 =
      "Error 438 (ZKRuntimeLib): Object doesn't support this property or method\n";
  const struct { const char* args; int code; const char* out; std::string err; } cases[] = {
      {"call clsZKRunTimeLib Init", 0, "True\n", ""},
      {"call TSRuntimeLib.clsZKRunTimeLib Language = 1 : Language", 0, "1\n", ""},
      {"call clszkruntimelib language = 40000.5 : LANGUAGE", 0, "40000\n", ""},
      {R"(call clsZKString filter selstart:=3 'FilteringStr:="-"' 'Expression:="a-b"')", 0,
       "\"ab\"\nSelStart = 2\n", ""},
      {R"(call clsZKArray SortBubble 'Array(-1 To 0: "b", "a") As String')", 0,
       "True\nSortArray = Array(-1 To 0: \"a\", \"b\") As String\n", ""},
      {R"(call clsZKDictionary Add '"k"' '5&' : Data '"k"' : Data '"k"' = Nothing : Data '"k"')",
       0, "5&\nNothing\n", ""},
      // the user-interface module, loaded on first use, with no display and quietly
      {"call CTimer Interval = 100 : Interval : Enabled = False : Enabled = True : Interval", 0,
       "100\n0\n", ""},
      // a declared Double -0 keeps its mark, or it would read back as the Integer 0
      {"call clsZKString ConvCVD 'ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & "
       "ChrW(0) & Chr(128)'", 0,
       "-0#\nExpression = ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & "
       "\"Ђ\"\n", ""},
      {"call clsTSErrors on error resume next : Item 0 = 5 : Nope : AddAsError Err : Count", 0,
       "1\n", ""},
      {"call clsZKRunTimeLib Language = 1 : Language : Nope", 1, "1\n", k438},
      {"call TSRuntimeLib.Enumerator Reset", 1, "",  // hosts receive enumerators, never make them
       "Error 429 (ZKRuntimeLib): ActiveX component can't create object\n"},
      {"frobnicate", 2, "", "tsrt: unknown command frobnicate"},
      {"call clsZKRunTimeLib", 2, "", "tsrt: wrong number of words after call"},
      {"enums xeNope", 2, "", "tsrt: no enumeration named xeNope (tsrt enums lists them)"},
      {"call clsZKRunTimeLib Init абв", 2, "",
       "tsrt: cannot read the argument абв: unexpected character 'а' at column 1"},
      {"call clsZKRunTimeLib Language = 1 2", 2, "", "tsrt: '=' takes exactly one value"},
      {"let clsZKRunTimeLib Language RHS:=1", 2, "",
       "tsrt: the assigned value cannot be a named argument"},
      // every argument is read before the first statement runs
      {"call clsZKRunTimeLib Language : Init abc", 2, "",
       "tsrt: cannot read the argument abc: unknown word 'abc' (text goes in double quotes) at "
       "column 1"}};
  for (const auto& c : cases) {
    const Outcome r = RunTsrt(c.args);
    EXPECT_EQ(r.code, c.code) << c.args;
    EXPECT_EQ(r.out, c.out) << c.args;
    const std::string err = c.code == 2 ? c.err + "\nusage: tsrt [repl]\n" : c.err;
    EXPECT_EQ(c.code == 2 ? r.err.substr(0, err.size()) : r.err, err) << c.args;
  }
}

// Each help string follows what it describes as a comment line, one step further in.
TEST(Tsrt, ListsClassesMembersEnumerationsAndHelp) {
  const struct {
    const char* args;
    std::vector<const char*> parts;  // each found in the output
  } cases[] = {
      {"classes", {"\nclsZKRunTimeLib    TSRuntimeLib.clsZKRunTimeLib\n",
                   "Enumerator         TSRuntimeLib.Enumerator  (not creatable)\n"}},
      {"members TSRuntimeLib.clsZKDictionary",
       {"Class clsZKDictionary  ' TSRuntimeLib.clsZKDictionary, enumerable with For Each\n",
        "\n  Property Set Data(ByVal Item As Variant, ByVal vData As Variant)  ' default member\n"
        "    ' The value of the key or zero-based index Item, or Nothing; the default member. ",
        "\n  Function NewEnum() As Enumerator  ' the enumerator For Each uses\n"}},
      {"members clszkstring",
       {"\n  Function Filter(ByVal Expression As String, ByVal FilteringStr As String, [ByVal "
        "Iclude As Boolean = False], [ByVal CompareType As Long = 0], [ByRef SelStart As Long]) "
        "As String\n    ' Keeps (Iclude True) or drops ",
        "\n  Function ArraySplit(ByVal DataString As String) As String()\n    ' Unpacks "}},
      {"enums xeZK_INTERFACE_LANGUAGE", {"Enum xeZK_INTERFACE_LANGUAGE\n  ' The thread's "}},
      {"--help", {"tsrt call CLASS MEMBER [ARG ...]", "Name:=literal"}}};
  for (const auto& c : cases) {
    const Outcome r = RunTsrt(c.args);
    EXPECT_EQ(r.code, 0) << c.args << ": " << r.err;
    for (const char* part : c.parts) EXPECT_THAT(r.out, testing::HasSubstr(part)) << c.args;
  }
}

// The same statements typed as a script and given to `tsrt call`: the same output, the
// same errors, the same status.
TEST(Tsrt, APipedScriptGivesWhatCallGives) {
  const struct {
    const char* call;
    const char* script;  // after "Set o = New CLASS"
  } rows[] = {
      {R"(clsZKString Filter '"a-b-c"' '"-"' SelStart:=4)", R"(? o.Filter("a-b-c", "-", SelStart:=4))"},
      {R"(clsTSErrors On Error Resume Next : Nope : AddAsError Err : GetAsText '"> "')",
       "On Error Resume Next : o.Nope : o.AddAsError Err : ? o.GetAsText(\"> \")"},
      {"clsZKRunTimeLib Language : Nope", "? o.Language : o.Nope"},
  };
  for (const auto& r : rows) {
    const std::string call = r.call;
    const std::string script = "Set o = New " + call.substr(0, call.find(' ')) + "\n" + r.script;
    const Outcome by_call = RunTsrt("call " + call);
    const Outcome by_script = RunTsrt("", "printf '%s\\n' '" + script + "' | ");
    EXPECT_EQ(by_script.out, by_call.out) << r.script;
    EXPECT_EQ(by_script.err, by_call.err) << r.script;
    EXPECT_EQ(by_script.code, by_call.code) << r.script;
  }
  const Outcome empty = RunTsrt("repl </dev/null");
  EXPECT_EQ(empty.code, 0);
  EXPECT_EQ(empty.out + empty.err, "") << "no prompt, nothing printed";
  // A line that fails stops that line alone; output and errors sharing one file stay in
  // the order the statements ran.
  const Outcome mixed =
      RunTsrt("", "printf '%s\\n' 'Set s = New clsZKString : ? 1 : ? s.Nope' '? (' '? 2' | ", true);
  EXPECT_EQ(mixed.code, 1);
  EXPECT_EQ(mixed.out, "1\nError 438 (ZKRuntimeLib): Object doesn't support this property or "
                       "method\ntsrt: line 2: expected a literal at column 4\n2\n");
  EXPECT_EQ(RunTsrt("repl more").code, 2);
}

// The report in a KOI8-R terminal: the locale is built for the test, the expected bytes
// come from iconv.
TEST(Tsrt, TheErrorReportGoesToStandardErrorInTheTerminalsCharacterSet) {
  const std::string dir = testing::TempDir() + "locales-" + std::to_string(getpid());
  ASSERT_EQ(std::system(("mkdir -p " + dir + " && localedef -i ru_RU -f KOI8-R " + dir +
                         "/ru_RU.KOI8-R 2>/dev/null").c_str()),
            0)
      << "localedef and the locales package are needed";
  const std::string expected_file = dir + "/expected";
  ASSERT_EQ(std::system(("printf 'Программа:\\tСклад\\r\\n\\r\\n  --> [5] Нет файла\\r\\n' | "
                         "iconv -f UTF-8 -t KOI8-R > " + expected_file).c_str()),
            0);
  const std::string call =
      R"(call clsTSErrors ProgramName = '"Склад"' : Add '"Нет файла"' 5 : ShowErrorMessage)";
  const Outcome koi8 = RunTsrt(call, "LOCPATH=" + dir + " LC_ALL=ru_RU.KOI8-R ");
  const Outcome ascii = RunTsrt(call, "LC_ALL=C ");
  EXPECT_EQ(koi8.code, 0);
  EXPECT_EQ(koi8.err, Slurp(expected_file));
  EXPECT_EQ(ascii.err, "Программа:\tСклад\r\n\r\n  --> [5] Нет файла\r\n")
      << "the C locale's ASCII is taken as UTF-8";
  std::system(("rm -rf " + dir).c_str());
}

}  // namespace
