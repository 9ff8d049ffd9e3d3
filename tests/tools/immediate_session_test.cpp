// The interactive session run as a script: statements, printing, written-back arguments,
// errors and On Error Resume Next, declarations, "did you mean" and the host runtime's
// conversions as a user meets them at the prompt; and what Tab completes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "commands.h"
#include "completion.h"
#include "immediate.h"
#include "tsruntime/automation/locale.h"

namespace tsrt {
namespace {

using testing::ElementsAre;

struct Ran { int status; std::string out, err; };

Ran Script(const std::string& text) {
  std::istringstream in(text);
  std::ostringstream out, err;
  const int status = RunImmediateScript(in, out, err);
  return {status, out.str(), err.str()};
}

const std::string k438 = "Error 438 (ZKRuntimeLib): Object doesn't support this property or method\n";

// Each script starts with a clsZKString in s and a clsTSError in e whose Description is D.
TEST(ImmediateSession, RunsStatementsAsTheHostLanguageDoes) {
  tsruntime::ScopedLocale russian("ru_RU");
  const std::string setup =
      "Set s = CreateObject(\"TSRuntimeLib.clsZKString\") : Set e = New clsTSError\n"
      "e.Description = \"D\"\n";
  const struct { const char* script; const char* out; std::string err = ""; } rows[] = {
      // results print as `tsrt call` prints them, then each argument written back
      {"? s.Filter(\"a-b-c\", \"-\", SelStart:=4), 5", "\"abc\"\t5\nSelStart = 2\n"},
      // a variable passed where the member writes back takes what it wrote
      {"p = 4 : s.Filter \"a-b-c\", \"-\", , , p : ? p; TypeName(p)",
       "SelStart = 2\n2& \"Long\"\n"},
      {"p = 4 : s.Filter \"a-b-c\", \"-\", , , (p) : ? p", "SelStart = 2\n4\n"},
      {"? xcZKLANG_ENG, xeZK_INTERFACE_LANGUAGE.xcZKLANG_ENG, &H8000", "1&\t1&\t-32768\n"},
      // objects where a value is expected: the default member
      {"x = e : ? e & \"!\", e = \"D\", e > \"E\", e <= \"D\", TypeName(x)",
       "\"D!\"\tTrue\tFalse\tTrue\t\"String\"\n"},
      {"Set f = New clsTSError : f.Description = e : ? f.Description, f Is e, e Is e",
       "\"D\"\tFalse\tTrue\n"},
      // `&` joins both sides as text in the locale, Null as nothing: Null & Null is Null
      {"? Null & Null, Null & 1, Null = 1, 1.5 & True", "Null\t\"1\"\tNull\t\"1,5True\"\n"},
      // the default member, array elements, an index before the assigned value
      {"Set es = New clsTSErrors : es.Add \"a\" : ? es(0).Description, es(0)",
       "\"a\"\t<Object clsTSError>\n"},
      {"a = s.ArraySplit(s.ArrayJoin(Array(\"x\", \"y\") As String)) : a(0) = \"z\" : ? a(0); a(1)",
       "\"z\" \"y\"\n"},
      {"Set d = New clsZKDictionary : d.Add \"k\", 5& : d.Data(\"k\") = 7 : ? d(\"k\")", "7\n"},
      // declarations, as tsrt members and tsrt enums list them
      {"? clsTSError.Description",
       "Property Get Description() As String  ' default member\n"
       "Property Let Description(ByVal RHS As String)  ' default member\n"},
      {"clsTSError = 5 : ? clsTSError", "5\n"},  // a variable of that name wins
      // errors: printed as tsrt call prints them; On Error Resume Next keeps them in Err
      {"On Error Resume Next : ? s.Nope : ? Err.Number : Err.Clear : ? Err.Number", "438\n0\n"},
      {"On Error Resume Next : s.Nope : On Error GoTo 0 : ? Err.Number : s.Nope", "0\n", k438},
      {"? s.InWrds(5@)", "", k438 + "did you mean InWords?\n"},
      {"? s.Filter(\"a\", \"-\", SelStrt:=1)", "",
       "Error 448 (ZKRuntimeLib): Named argument not found\ndid you mean SelStart?\n"},
      {"? ss.Trim(\"x\")", "", "tsrt: line 3: unknown name ss at column 3; did you mean s?\n"},
      {"Set y = 5", "", "Error 424 (ZKRuntimeLib): Object required\n"},
      {"xcZKLANG_ENG = 1", "", "tsrt: line 3: cannot assign to xcZKLANG_ENG at column 1\n"},
      {"x", "", "tsrt: line 3: expected a statement (? prints a value) at column 1\n"},
      // a failed line stops that line, not the script; Exit ends it
      {"? s.Nope : ? 1\n? 2 ' a comment\nExit\n? 3", "2\n", k438},
  };
  for (const auto& r : rows) {
    const Ran got = Script(setup + r.script);
    EXPECT_EQ(got.out, r.out) << r.script;
    EXPECT_EQ(got.err, r.err) << r.script;
    EXPECT_EQ(got.status, r.err.empty() ? kSucceeded : kFailed) << r.script;
  }
}

// Tab completion: members from the type information, named arguments, enumeration
// members, classes for CreateObject and New, keywords.
TEST(Completion, OffersWhatMayStandAtTheCursor) {
  ImmediateSession session;
  std::ostringstream out, err;
  ASSERT_TRUE(session.RunLine("Set s = New clsZKString : Set errs = New clsTSErrors : "
                              "Set session = Nothing : n = 1", out, err)) << err.str();
  const std::pair<const char*, testing::Matcher<std::vector<std::string>>> rows[] = {
      {"Set t = New clsZKS", ElementsAre("clsZKStorage", "clsZKStorageItems", "clsZKStorageNodes",
                                          "clsZKString", "clsZKStringConcat", "clsZKSystem")},
      {"? \"s.InW", ElementsAre()},  // inside text
      {"? s.inw", ElementsAre("InWords")},
      {"? errs.Item(0).Desc", ElementsAre("Description")},  // what Item returns
      {"? Err.", ElementsAre("Clear", "Description", "HelpContext", "HelpFile", "Number", "Source")},
      {"? xeZK_INTERFACE_LANGUAGE.", ElementsAre("xcZKLANG_ENG", "xcZKLANG_RUS")},
      {"? s.Filter(\"a-b\", \"-\", Sel", ElementsAre("SelStart:=")},
      {"? hkey_cu", ElementsAre("HKEY_CURRENT_CONFIG", "HKEY_CURRENT_USER")},
      {"? se", ElementsAre("session")},  // no statement keyword past the start
      {"Se", ElementsAre("Set", "session")},
      {"n = 1 : O", ElementsAre("On Error GoTo 0", "On Error Resume Next")},
      {"? N", ElementsAre("New", "Nothing", "Null", "n")},
      {"? session.", ElementsAre()},  // Nothing has no members
  };
  for (const auto& [line, candidates] : rows) {
    EXPECT_THAT(Complete(session, line).candidates, candidates) << line;
  }
  EXPECT_EQ(Complete(session, "? \"ёж\" & s.InW").start, 13u) << "bytes, past two-byte letters";
}

}  // namespace
}  // namespace tsrt
