// The commands driven in process against a class registered by this test program, so
// that results, written-back arguments and raised errors of every shape are covered.
#include "commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "tools/test_support.h"
#include "tsruntime/automation/dispatch.h"

namespace tsruntime {
namespace {

// Echoes, swaps and counts so that each output line can be predicted from its input.
class TsrtProbe : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  Variant Echo(const Variant& value) { return value; }
  void Swap(String& a, String& b) { std::swap(a, b); }
  bool Bump(int32_t& count, int32_t step) {
    count += step;
    return count > 0;
  }
  // The length of `text`; `position` (when given) receives where "b" is, 1-based.
  int32_t Find(const String& text, int32_t* position) {
    if (position) *position = static_cast<int32_t>(text.find(u'b') + 1);
    return static_cast<int32_t>(text.size());
  }
  void Grow(SafeArray& items) {
    items.RedimPreserve(items.isDimensioned() ? items.ubound() + 1 : 0);
    items.set(items.ubound(), Variant(String(u"new")));
  }
  void Fail(int32_t number, const String& description) {
    throw Error(number, u"ZKRuntimeLib.TsrtProbe.Fail", description);
  }
  Ref<TsrtProbe> Self() { return Ref<TsrtProbe>(this); }
  int32_t Total() const { return total_; }
  void LetTotal(int32_t value) { total_ = value; }
  Ref<Object> Buddy() const { return buddy_; }
  void SetBuddy(Ref<Object> buddy) { buddy_ = std::move(buddy); }

 private:
  int32_t total_ = 0;
  Ref<Object> buddy_;
};

TSRUNTIME_DEFINE_CLASS(TsrtProbe) {
  static const ClassInfo info =
      ClassBuilder<TsrtProbe>("TsrtProbe")
          .Method("Echo", &TsrtProbe::Echo, {"Value"})
          .Method("Swap", &TsrtProbe::Swap, {"A", "B"})
          .Method("Bump", &TsrtProbe::Bump, {"Count", Opt("Step", int32_t{1})})
          .Method("Find", &TsrtProbe::Find, {"Text", Opt("Position")})
          .Method("Grow", &TsrtProbe::Grow, {Typed("Items", ArrayOf(VarType::kString))})
          .Method("Fail", &TsrtProbe::Fail, {"Number", "Description"})
          .Method("Self", &TsrtProbe::Self)
          .Get("Total", &TsrtProbe::Total)
          .Let("Total", &TsrtProbe::LetTotal, {"RHS"})
          .Get("Buddy", &TsrtProbe::Buddy)
          .Set("Buddy", &TsrtProbe::SetBuddy, {"RHS"})
          .Build();
  return info;
}

}  // namespace
}  // namespace tsruntime

namespace tsrt {
namespace {

using tsrt_test::Joined;

struct Outcome {
  int code;
  std::string out;
  std::string err;
};

Outcome RunWords(std::vector<std::string> words) {
  std::ostringstream out, err;
  const int code = Run(words, out, err);
  return {code, out.str(), err.str()};
}

struct CallCase {
  std::vector<std::string> words;
  const char* out;
};

TEST(TsrtCall, PrintsTheResultThenEachWrittenBackArgument) {
  const CallCase cases[] = {
      {{"call", "TsrtProbe", "Echo", "70000"}, "70000\n"},
      {{"call", "TsrtProbe", "Echo", "5&"}, "5&\n"},
      {{"call", "TsrtProbe", "echo", "Value:=True"}, "True\n"},
      {{"call", "TSRuntimeLib.TsrtProbe", "Echo", R"("a" & vbCrLf & "б")"},
       "\"a\" & vbCrLf & \"б\"\n"},
      {{"call", "TsrtProbe", "Echo", "Array(1 To 2: \"x\", 2.5!)"}, "Array(1 To 2: \"x\", 2.5!)\n"},
      {{"call", "TsrtProbe", "Swap", R"("left")", R"("right")"}, "A = \"right\"\nB = \"left\"\n"},
      {{"call", "TsrtProbe", "Swap", R"(B:="b")", R"(a:="a")"}, "A = \"b\"\nB = \"a\"\n"},
      {{"call", "TsrtProbe", "Bump", "5"}, "True\nCount = 6\n"},
      {{"call", "TsrtProbe", "Bump", "5", "Step:=-10"}, "False\nCount = -5\n"},
      {{"call", "TsrtProbe", "Find", R"("abc")"}, "3\n"},
      {{"call", "TsrtProbe", "Find", R"("abc")", "0"}, "3\nPosition = 2\n"},
      {{"call", "TsrtProbe", "Find", R"("abc")", "Missing"}, "3\n"},
      {{"call", "TsrtProbe", "Find", R"("abc")", ""}, "3\n"},
      {{"call", "TsrtProbe", "Find", "Position:=0", R"(Text:="xb")"}, "2\nPosition = 2\n"},
      {{"call", "TsrtProbe", "Grow", R"(Array(-1 To -1: "") As String)"},
       "Items = Array(-1 To 0: \"\", \"new\") As String\n"},
      {{"call", "TsrtProbe", "Grow", "Array(Undimensioned) As String"},
       "Items = Array(\"new\") As String\n"},
      {{"call", "TsrtProbe", "Self"}, "<Object TsrtProbe>\n"},
      {{"call", "TsrtProbe", "Buddy"}, "Nothing\n"},
  };
  for (const CallCase& c : cases) {
    const Outcome r = RunWords(c.words);
    EXPECT_EQ(r.code, kSucceeded) << Joined(c.words) << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << Joined(c.words);
    EXPECT_EQ(r.err, "") << Joined(c.words);
  }
}

TEST(TsrtCall, StatementsAfterAColonRunOnTheSameObject) {
  const CallCase cases[] = {
      {{"call", "TsrtProbe", "Total", "=", "7", ":", "Total"}, "7\n"},
      {{"call", "TsrtProbe", "Total", "=", "7", ":", "Total", ":", "Bump", "1"},
       "7\nTrue\nCount = 2\n"},
      {{"call", "TsrtProbe", "Total", "=", "2.5", ":", "Total"}, "2\n"},
      {{"call", "TsrtProbe", "Total", ":", "Total", "=", "1"}, "0\n"},
      {{"call", "TsrtProbe", "Buddy", "=", "Nothing", ":", "Buddy"}, "Nothing\n"},
      {{"let", "TsrtProbe", "Total", "7"}, ""},
  };
  for (const CallCase& c : cases) {
    const Outcome r = RunWords(c.words);
    EXPECT_EQ(r.code, kSucceeded) << Joined(c.words) << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << Joined(c.words);
  }
}

struct FailureCase {
  std::vector<std::string> words;
  const char* out;  // what ran before the failure
  const char* err;
};

TEST(TsrtCall, ARaisedErrorPrintsItsNumberSourceAndDescriptionAndExitsWithOne) {
  const FailureCase cases[] = {
      {{"call", "TsrtProbe", "Nope"}, "",
       "Error 438 (ZKRuntimeLib): Object doesn't support this property or method\n"},
      {{"call", "TsrtProbe", "Echo", "1", "2"}, "",
       "Error 450 (ZKRuntimeLib): Wrong number of arguments or invalid property assignment\n"},
      {{"call", "TsrtProbe", "Echo", "Nope:=1"}, "",
       "Error 448 (ZKRuntimeLib): Named argument not found\n"},
      {{"call", "TsrtProbe", "Bump"}, "", "Error 449 (ZKRuntimeLib): Argument not optional\n"},
      {{"call", "TsrtProbe", "Echo", ""}, "", "Error 449 (ZKRuntimeLib): Argument not optional\n"},
      {{"call", "TsrtProbe", "Bump", R"("x")"}, "", "Error 13 (ZKRuntimeLib): Type mismatch\n"},
      {{"call", "TsrtProbe", "Bump", "Null"}, "", "Error 94 (ZKRuntimeLib): Invalid use of Null\n"},
      {{"call", "TsrtProbe", "Total", "=", "3000000000"}, "", "Error 6 (ZKRuntimeLib): Overflow\n"},
      {{"call", "NoSuchClass", "Init"}, "",
       "Error 429 (ZKRuntimeLib): ActiveX component can't create object\n"},
      {{"call", "TsrtProbe", "Fail", "-2147220803", R"("Плохо" & vbCrLf & "Text = 'x'")"}, "",
       "Error -2147220803 (ZKRuntimeLib.TsrtProbe.Fail): Плохо\r\nText = 'x'\n"},
      {{"call", "TsrtProbe", "Total", "=", "3", ":", "Total", ":", "Nope"}, "3\n",
       "Error 438 (ZKRuntimeLib): Object doesn't support this property or method\n"},
  };
  for (const FailureCase& c : cases) {
    const Outcome r = RunWords(c.words);
    EXPECT_EQ(r.code, kFailed) << Joined(c.words);
    EXPECT_EQ(r.out, c.out) << Joined(c.words);
    EXPECT_EQ(r.err, c.err) << Joined(c.words);
  }
}

struct MisuseCase {
  std::vector<std::string> words;
  const char* message;  // the first line on standard error
};

TEST(TsrtUsage, BadCommandLinesPrintTheFaultAndTheUsageAndExitWithTwo) {
  const MisuseCase cases[] = {
      {{}, "tsrt: no command given"},
      {{"frobnicate"}, "tsrt: unknown command frobnicate"},
      {{"classes", "extra"}, "tsrt: wrong number of words after classes"},
      {{"members"}, "tsrt: wrong number of words after members"},
      {{"members", "NoSuchClass"}, "tsrt: no class named NoSuchClass (tsrt classes lists them)"},
      {{"enums", "xeNope"}, "tsrt: no enumeration named xeNope (tsrt enums lists them)"},
      {{"enums", "a", "b"}, "tsrt: wrong number of words after enums"},
      {{"call", "TsrtProbe"}, "tsrt: wrong number of words after call"},
      {{"call", "TsrtProbe", "Echo", "abc"},
       "tsrt: cannot read the argument abc: unknown word 'abc' (text goes in double quotes) at "
       "column 1"},
      {{"call", "TsrtProbe", "Total", "=", "1", "2"}, "tsrt: '=' takes exactly one value"},
      {{"call", "TsrtProbe", "Total", "="}, "tsrt: '=' takes exactly one value"},
      {{"call", "TsrtProbe", "Total", "=", "RHS:=1"},
       "tsrt: the assigned value cannot be a named argument"},
      {{"call", "TsrtProbe", "Echo", "1", ":"}, "tsrt: a member name is missing"},
      {{"call", "TsrtProbe", "=", "1"}, "tsrt: a member name is missing"},
      {{"let", "TsrtProbe", "Total"}, "tsrt: wrong number of words after let"},
      {{"let", "TsrtProbe", "Total", "Name:=1"},
       "tsrt: the assigned value cannot be a named argument"},
  };
  for (const MisuseCase& c : cases) {
    const Outcome r = RunWords(c.words);
    EXPECT_EQ(r.code, kMisused) << Joined(c.words);
    EXPECT_EQ(r.out, "") << Joined(c.words);
    const std::string expected = std::string(c.message) + "\nusage: tsrt classes\n";
    EXPECT_EQ(r.err.substr(0, expected.size()), expected) << Joined(c.words);
  }
}

TEST(TsrtUsage, ArgumentsAreAllReadBeforeAnyStatementRuns) {
  const Outcome r = RunWords(
      {"call", "TsrtProbe", "Total", "=", "1", ":", "Total", ":", "Echo", "\"unterminated"});
  EXPECT_EQ(r.code, kMisused);
  EXPECT_EQ(r.out, "");
}

TEST(TsrtListing, MembersAndClassesComeFromTheRegistry) {
  const Outcome members = RunWords({"members", "tsrtprobe"});
  EXPECT_EQ(members.code, kSucceeded);
  EXPECT_NE(members.out.find("  Function Bump(ByRef Count As Long, [ByVal Step As Long = 1]) "
                             "As Boolean\n"),
            std::string::npos)
      << members.out;
  EXPECT_NE(members.out.find("  Sub Grow(ByRef Items() As String)\n"), std::string::npos)
      << members.out;
  EXPECT_NE(members.out.find("  Function Find(ByVal Text As String, [ByRef Position As Long]) "
                             "As Long\n"),
            std::string::npos)
      << members.out;

  const Outcome classes = RunWords({"classes"});
  EXPECT_EQ(classes.code, kSucceeded);
  EXPECT_THAT(classes.out, ::testing::ContainsRegex("(^|\n)TsrtProbe +TSRuntimeLib\\.TsrtProbe\n"));
}

}  // namespace
}  // namespace tsrt
