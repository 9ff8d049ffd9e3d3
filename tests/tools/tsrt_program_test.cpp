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

// Runs `tsrt ARGS` through the shell, as a user types it; the output goes through files.
Outcome RunTsrt(const std::string& args, const std::string& environment = "") {
  const std::string out = testing::TempDir() + "tsrt-" + std::to_string(getpid()) + ".out";
  const std::string command =
      environment + std::string(TSRT_PATH) + " " + args + " >" + out + " 2>" + out + "2";
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(out), Slurp(out + "2")};
}

TEST(Tsrt, CallsPrintTheResultThenEachArgumentWrittenBack) {
  const struct { const char* args; const char* out; } cases[] = {
      {"call clsZKRunTimeLib Init", "True\n"},
      {"call clsZKRunTimeLib Language", "0\n"},  // declared Long: no mark
      {"call TSRuntimeLib.clsZKRunTimeLib Language = 1 : Language", "1\n"},
      {"call clszkruntimelib language = 40000.5 : LANGUAGE", "40000\n"},
      {"let clsZKRunTimeLib Language 1", ""},
      {R"(call clsZKString InstrRight '"a.b.c"' '"."' CompareType:=1)", "4\n"},
      {R"(call clsZKString Replace '"a,b"' '","' vbCrLf)", "\"a\" & vbCrLf & \"b\"\n"},
      {R"(call clsZKString Filter '"a-b-c"' '"-"' False 0 3)", "\"abc\"\nSelStart = 2\n"},
      {R"(call clsZKString filter selstart:=3 'FilteringStr:="-"' 'Expression:="a-b"')",
       "\"ab\"\nSelStart = 2\n"},
      {R"(call clsZKString Filter '"a-b-c"' '"-"' '' 0 Missing)", "\"abc\"\n"},
      {R"(call clsZKArray SortBubble 'Array(-1 To 0: "b", "a") As String')",
       "True\nSortArray = Array(-1 To 0: \"a\", \"b\") As String\n"},
      {R"(call clsZKDictionary Add '"k"' '5&' : Data '"k"' : Data '"k"' = Nothing : Data '"k"')",
       "5&\nNothing\n"},
      // the user-interface module, loaded on first use, with no display and quietly
      {"call CTimer Interval = 100 : Interval : Enabled = False : Enabled = True : Interval",
       "100\n0\n"},
      // a declared Double -0 keeps its mark, or it would read back as the Integer 0
      {"call clsZKString ConvCVD 'ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & "
       "ChrW(0) & Chr(128)'",
       "-0#\nExpression = ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & ChrW(0) & "
       "\"Ђ\"\n"}};
  for (const auto& c : cases) {
    const Outcome r = RunTsrt(c.args);
    EXPECT_EQ(r.code, 0) << c.args << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << c.args;
    EXPECT_EQ(r.err, "") << c.args;
  }
}

// Status 1 prints the raised error exactly; status 2 names the fault, then the usage.
// What ran before the fault stays printed; On Error Resume Next keeps each failure in Err.
TEST(Tsrt, StatusAndStandardErrorTellFailuresAndOnErrorResumeNextKeepsThemInErr) {
  const std::string k438 =
      "Error 438 (ZKRuntimeLib): Object doesn't support this property or method\n";
  const struct { const char* args; int code; const char* out; std::string err; } cases[] = {
      {"call clsTSErrors On Error Resume Next : Nope : AddAsError Err : GetAsText", 0,
       "\"[438] Object doesn't support this property or method\" & vbCrLf\n", ""},
      {"call clsTSErrors on error resume next : Item 0 = 5 : Nope : AddAsError Err : Count", 0,
       "1\n", ""},
      {"call clsTSErrors AddAsError Err : GetAsText", 0, "vbCrLf\n", ""},
      {"call clsTSErrors Nope : AddAsError Err", 1, "", k438},
      {"call clsZKRunTimeLib Nope", 1, "", k438},
      {"call clsZKRunTimeLib Language = 1 : Language : Nope", 1, "1\n", k438},
      {"call NoSuchClass Init", 1, "",
       "Error 429 (ZKRuntimeLib): ActiveX component can't create object\n"},
      {"call GSubclass AttachMessage Nothing 5 16", 1, "",
       "Error -2147208421 (tsruntime.WindowProc): Invalid window\n"},
      {R"(call clsZKString InstrRight '"a"' '"b"' -2)", 1, "",
       "Error -2147220803 (ZKRuntimeLib.clsZKString.InstrRight): SearchLen = -2\n"},
      {R"(call clsZKString Filter 'Expression:="a"')", 1, "",
       "Error 449 (ZKRuntimeLib): Argument not optional\n"},
      {R"(call clsZKmd5 DigestFileToHexStr '"/dev/zero"')", 1, "",
       "Error 52 (ZKRuntimeLib): Bad file name or number\n"},
      {"call clsZKRunTimeLib Init 'Array(-2147483648 To 2147483647, -2147483648 To 2147483647:)'",
       2, "",
       "tsrt: cannot read the argument Array(-2147483648 To 2147483647, -2147483648 To "
       "2147483647:): the bounds describe too large an array at column 1"},
      {"frobnicate", 2, "", "tsrt: unknown command frobnicate"},
      {"call clsZKRunTimeLib", 2, "", "tsrt: wrong number of words after call"},
      {"members NoSuchClass", 2, "", "tsrt: no class named NoSuchClass (tsrt classes lists them)"},
      {"enums xeNope", 2, "", "tsrt: no enumeration named xeNope (tsrt enums lists them)"},
      {"call clsZKRunTimeLib Init абв", 2, "",
       "tsrt: cannot read the argument абв: unexpected character 'а' at column 1"},
      {"call clsZKRunTimeLib Language = 1 2", 2, "", "tsrt: '=' takes exactly one value"},
      {"let clsZKRunTimeLib Language RHS:=1", 2, "",
       "tsrt: the assigned value cannot be a named argument"},
      {"call clsZKRunTimeLib Init :", 2, "", "tsrt: a member name is missing"},
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

TEST(Tsrt, ListsClassesMembersEnumerationsAndHelp) {
  const struct {
    const char* args;
    std::vector<const char*> parts;  // each found in the output
  } cases[] = {
      {"classes", {"\nclsZKRunTimeLib    TSRuntimeLib.clsZKRunTimeLib\n",
                   "Enumerator         TSRuntimeLib.Enumerator  (not creatable)\n",
                   "CTimer             TSRuntimeLib.CTimer\n",
                   "ISubclass          TSRuntimeLib.ISubclass  (not creatable)\n"}},
      // each help string follows what it describes as a comment line, one step further in
      {"members CTimer",
       {"  Sub PulseTimer()\n    ' Raises ThatTime at once, running or not.\n",
        "\n  Event ThatTime()\n    ' Raised on every tick, on the thread that created the "
        "timer.\nEnd Class\n"}},
      {"enums EErrorTimer",
       {"  eeTooManyTimers = 13651\n    ' A thread's 101st running timer; raised Or "
        "0x80040000.\n  eeCantCreateTimer = 13652\n"}},
      {"members clsZKRunTimeLib",
       {"Class clsZKRunTimeLib  ' TSRuntimeLib.clsZKRunTimeLib\n  ' The library's root object: ",
        "\n  Function Init() As Boolean\n    ' Does no work and returns True.\n"
        "  Property Let Language(ByVal RHS As Long)\n    ' The interface language of this "
        "thread (xeZK_INTERFACE_LANGUAGE), stored unchecked; a new root object resets it to "
        "Russian.\n  Property Get Language() As Long\n    ' The interface language of this "
        "thread (",
        "\n  Property Get GetObjString() As clsZKString\n    ' A new clsZKString on every "
        "read.\n"}},
      {"members TSRuntimeLib.clsZKDictionary",
       {"Class clsZKDictionary  ' TSRuntimeLib.clsZKDictionary, enumerable with For Each\n",
        "\n  Property Set Data(ByVal Item As Variant, ByVal vData As Variant)  ' default member\n"
        "    ' The value of the key or zero-based index Item, or Nothing; the default member. ",
        "\n  Function NewEnum() As Enumerator  ' the enumerator For Each uses\n",
        "\n  Event OnChanged(ByVal ChangedItem As Variant)\n    ' Raised by assigning Data or "
        "Key, with the Item the host passed.\nEnd Class\n"}},
      {"members clszkstring",
       {"\n  Function Filter(ByVal Expression As String, ByVal FilteringStr As String, [ByVal "
        "Iclude As Boolean = False], [ByVal CompareType As Long = 0], [ByRef SelStart As Long]) "
        "As String\n    ' Keeps (Iclude True) or drops ",
        "\n  Function ArrayJoin(ByVal DataArray() As String) As String\n    ' Packs ",
        "\n  Function ArraySplit(ByVal DataString As String) As String()\n    ' Unpacks "}},
      {"members enumerator",
       {"Class Enumerator  ' TSRuntimeLib.Enumerator, not creatable\n  ' Steps through ",
        "\n  Function Next(ByRef Item As Variant) As Boolean\n    ' Puts the next item ",
        "\n  Sub Reset()\n    ' Goes back to the first item.\n"}},
      {"enums xeZK_INTERFACE_LANGUAGE",
       {"Enum xeZK_INTERFACE_LANGUAGE\n  ' The thread's interface language, "
        "clsZKRunTimeLib.Language.\n  xcZKLANG_RUS = 0\n    ' Russian texts.\n"
        "  xcZKLANG_ENG = 1\n    ' English texts, where a text has both.\nEnd Enum\n"}},
      {"enums", {"\n  xcZKERR_STRING_INSTRRIGHT = -2147220803\n    ' ", "End Enum\n\nEnum "}},
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
      {R"(clsZKArray SortBubble 'Array(-1 To 0: "b", "a") As String')",
       R"(? o.SortBubble(Array(-1 To 0: "b", "a") As String))"},
      {"clsZKRunTimeLib Language = xcZKLANG_ENG : Language : GetObjString",
       "o.Language = xcZKLANG_ENG : ? o.Language : ? o.GetObjString"},
      {"clsZKMem HiWord '&H12345678' : LoWord '&HFFFF&'", "? o.HiWord(&H12345678) : ? o.LoWord(&HFFFF&)"},
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
  const Outcome unread = RunTsrt("", "printf '? 1\\n? (\\n? 2\\n' | ");
  EXPECT_EQ(unread.code, 1);
  EXPECT_EQ(unread.out, "1\n2\n");
  EXPECT_EQ(unread.err, "tsrt: line 2: expected a literal at column 4\n");
  EXPECT_EQ(RunTsrt("repl more").code, 2);
}

// Output and error messages sharing one file stay in the order the statements ran.
TEST(Tsrt, AScriptsOutputAndErrorsKeepTheirOrderInOneFile) {
  const std::string out = testing::TempDir() + "tsrt-one-" + std::to_string(getpid()) + ".out";
  const std::string script = "'Set s = New clsZKString : ? 1 : ? s.Nope' '? 2'";
  const std::string command =
      "printf '%s\\n' " + script + " | " + std::string(TSRT_PATH) + " >" + out + " 2>&1";
  const int status = std::system(command.c_str());
  EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 1);
  EXPECT_EQ(Slurp(out),
            "1\nError 438 (ZKRuntimeLib): Object doesn't support this property or method\n2\n");
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
