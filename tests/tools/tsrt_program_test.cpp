// The built `tsrt` program run as a user runs it, on the library's own classes: output,
// written-back arguments, errors and exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/child_process.h"

namespace {

using tsruntime::testing::ChildResult;
using tsruntime::testing::RunProgram;

// Runs `tsrt ARGS` through the shell as a user types it, after `before` (a pipe, an
// environment); the output is standard output and standard error as they came.
ChildResult Tsrt(const std::string& args, const std::string& before = "") {
  return RunProgram({"sh", "-c", before + TSRT_PATH + " " + args});
}

// A call prints its result, then each argument written back, with status 0. Status 1
// prints the raised error exactly, after what ran before it; status 2 names the fault,
// then the usage. On Error Resume Next keeps each failure in Err.
TEST(Tsrt, PrintsResultsWrittenBackArgumentsAndFailuresWithTheirStatus) {
  // The output: standard output, then standard error.
  const struct { const char* args; int code; std::string output; } cases[] = {
      {"call clszkruntimelib language = 40000.5 : LANGUAGE", 0, "40000\n"},  // declared Long
      {R"(call clsZKString filter selstart:=3 'FilteringStr:="-"' 'Expression:="a-b"')", 0,
       "\"ab\"\nSelStart = 2\n"},
      {R"(call clsZKArray SortBubble 'Array(-1 To 0: "b", "a") As String')", 0,
       "True\nSortArray = Array(-1 To 0: \"a\", \"b\") As String\n"},
      {R"(call clsZKDictionary Add '"k"' '5&' : Data '"k"' : Data '"k"' = Nothing : Data '"k"')",
       0, "5&\nNothing\n"},
      // the user-interface module, loaded on first use, with no display and quietly
      {"call CTimer Interval = 100 : Interval : Enabled = False : Enabled = True : Interval", 0,
       "100\n0\n"},
      {"call clsTSErrors on error resume next : Item 0 = 5 : Nope : AddAsError Err : Count", 0,
       "1\n"},
      {"call TSRuntimeLib.clsZKRunTimeLib Init : Nope", 1,
       "True\nError 438 (ZKRuntimeLib): Object doesn't support this property or method\n"},
      {"call TSRuntimeLib.Enumerator Reset", 1,  // hosts receive enumerators, never make them
       "Error 429 (ZKRuntimeLib): ActiveX component can't create object\n"},
      {"frobnicate", 2, "tsrt: unknown command frobnicate"},
      {"call clsZKRunTimeLib", 2, "tsrt: wrong number of words after call"},
      {"let clsZKRunTimeLib Language RHS:=1", 2,
       "tsrt: the assigned value cannot be a named argument"},
      {"call clsZKRunTimeLib Init абв", 2,
       "tsrt: cannot read the argument абв: unexpected character 'а' at column 1"},
      // every argument is read before the first statement runs
      {"call clsZKRunTimeLib Language : Init abc", 2,
       "tsrt: cannot read the argument abc: unknown word 'abc' (text goes in double quotes) at "
       "column 1"}};
  for (const auto& c : cases) {
    const ChildResult r = Tsrt(c.args);
    EXPECT_EQ(r.exit_code, c.code) << c.args;
    const std::string output = c.code == 2 ? c.output + "\nusage: tsrt [repl]\n" : c.output;
    EXPECT_EQ(c.code == 2 ? r.output.substr(0, output.size()) : r.output, output) << c.args;
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
      {"members clszkstring",
       {"\n  Function Filter(ByVal Expression As String, ByVal FilteringStr As String, [ByVal "
        "Iclude As Boolean = False], [ByVal CompareType As Long = 0], [ByRef SelStart As Long]) "
        "As String\n    ' Keeps (Iclude True) or drops ",
        "\n  Function ArraySplit(ByVal DataString As String) As String()\n    ' Unpacks "}},
      {"enums xeZK_INTERFACE_LANGUAGE",
       {"Enum xeZK_INTERFACE_LANGUAGE\n  ' The thread's interface language, clsZKRunTimeLib."
        "Language.\n  xcZKLANG_RUS = 0\n    ' Russian texts.\n  xcZKLANG_ENG = 1\n"}},
      {"members TSRuntimeLib.clsZKDictionary",
       {"Class clsZKDictionary  ' TSRuntimeLib.clsZKDictionary, enumerable with For Each\n"}}};
  for (const auto& c : cases) {
    const ChildResult r = Tsrt(c.args);
    EXPECT_EQ(r.exit_code, 0) << c.args << ": " << r.output;
    for (const char* part : c.parts) EXPECT_THAT(r.output, ::testing::HasSubstr(part)) << c.args;
  }
}

// The same statements typed as a script and given to `tsrt call`: the same output, the
// same status. A line that fails stops that line alone; output and errors stay in the
// order the statements ran.
TEST(Tsrt, APipedScriptGivesWhatCallGives) {
  const ChildResult by_call = Tsrt(R"(call clsZKString Filter '"a-b-c"' '"-"' SelStart:=4 : Nope)");
  const ChildResult by_script = Tsrt("", R"(printf '%s\n' 'Set o = New clsZKString' )"
                                         R"('? o.Filter("a-b-c", "-", SelStart:=4) : o.Nope' | )");
  EXPECT_EQ(by_script.output, by_call.output);
  EXPECT_EQ(by_script.exit_code, by_call.exit_code);
  const ChildResult mixed = Tsrt("", "printf '%s\\n' '? 1' '? (' '? 2' | ");
  EXPECT_EQ(mixed.exit_code, 1);
  EXPECT_EQ(mixed.output, "1\ntsrt: line 2: expected a literal at column 4\n2\n");
  EXPECT_EQ(Tsrt("repl").output, "") << "no prompt, nothing printed";
  EXPECT_EQ(Tsrt("repl more").exit_code, 2);
}

// The report in a KOI8-R terminal: the locale is built for the test, the expected bytes
// come from iconv; the C locale's ASCII is taken as UTF-8.
TEST(Tsrt, TheErrorReportGoesToStandardErrorInTheTerminalsCharacterSet) {
  const std::string dir = ::testing::TempDir() + "locales-" + std::to_string(getpid());
  const std::string report = "Программа:\tСклад\r\n\r\n  --> [5] Нет файла\r\n";
  const ChildResult expected = RunProgram(
      {"sh", "-c", "mkdir -p " + dir + " && localedef -i ru_RU -f KOI8-R " + dir + "/ru_RU.KOI8-R" +
                       " >/dev/null 2>&1 && printf '%s' '" + report + "' | iconv -t KOI8-R"});
  ASSERT_EQ(expected.exit_code, 0) << "localedef, iconv and the locales package are needed";
  const std::string call =
      R"(call clsTSErrors ProgramName = '"Склад"' : Add '"Нет файла"' 5 : ShowErrorMessage)";
  const ChildResult koi8 = Tsrt(call, "LOCPATH=" + dir + " LC_ALL=ru_RU.KOI8-R ");
  EXPECT_EQ(koi8.exit_code, 0);
  EXPECT_EQ(koi8.output, expected.output);
  EXPECT_EQ(Tsrt(call, "LC_ALL=C ").output, report);
  RunProgram({"rm", "-rf", dir});
}

}  // namespace
