// Tab completion in the interactive session: members from the type information,
// named arguments, enumeration members, classes for CreateObject and New, keywords.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "completion.h"

namespace tsrt {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(Completion, OffersWhatMayStandAtTheCursor) {
  ImmediateSession session;
  std::ostringstream out, err;
  ASSERT_TRUE(session.RunLine(
      "Set s = New clsZKString : Set errs = New clsTSErrors : Set session = Nothing : n = 1",
      out, err))
      << err.str();
  const std::vector<std::string> zk_s = {"clsZKStorage", "clsZKStorageItems", "clsZKStorageNodes",
                                         "clsZKString",  "clsZKStringConcat", "clsZKSystem"};
  const struct { const char* line; testing::Matcher<std::vector<std::string>> candidates;
      } rows[] = {
      {"Set t = CreateObject(\"TSRuntimeLib.clsZKStr",
       ElementsAre("clsZKString", "clsZKStringConcat")},
      {"Set t = CreateObject(\"clszkstr", ElementsAre("clsZKString", "clsZKStringConcat")},
      {"Set t = CreateObject(\"TSR", ElementsAre("TSRuntimeLib.")},
      {"Set t = New clsZKS", testing::ContainerEq(zk_s)},
      {"? \"s.InW", ElementsAre()},  // inside text
      {"? s.InW", ElementsAre("InWords")}, {"? s.inw", ElementsAre("InWords")},
      {"? errs.Item(0).Desc", ElementsAre("Description")},  // what Item returns
      {"? Err.", ElementsAre("Clear", "Description", "HelpContext", "HelpFile", "Number", "Source")},
      {"? clsZKRunTimeLib.Ini", ElementsAre("Init")},
      {"? TSRuntimeLib.clsZKRunTimeLib.GetObjS", ElementsAre("GetObjString", "GetObjSystem")},
      {"? TSRuntimeLib.clsZKRunTimeL", ElementsAre("clsZKRunTimeLib")},
      {"? xeZK_INTERFACE_LANGUAGE.", ElementsAre("xcZKLANG_ENG", "xcZKLANG_RUS")},
      {"? s.Filter(\"a-b\", \"-\", Sel", ElementsAre("SelStart:=")},
      {"s.Filter \"a-b\", \"-\", sel", ElementsAre("SelStart:=")},
      {"Call s.Trim(\"x\", \"\", xcZK_TRIM_", Contains("xcZK_TRIM_LEFT")},
      {"? s.Trim(\"x\", Len(1), c", Contains("CompareType:=")},
      {"? hkey_cu", ElementsAre("HKEY_CURRENT_CONFIG", "HKEY_CURRENT_USER")},
      {"? vbCr", ElementsAre("vbCr", "vbCrLf")}, {"? Cre", ElementsAre("CreateObject")},
      {"? se", ElementsAre("session")},  // no statement keyword past the start
      {"Se", ElementsAre("Set", "session")},
      {"n = 1 : O", ElementsAre("On Error GoTo 0", "On Error Resume Next")},
      {"? N", ElementsAre("New", "Nothing", "Null", "n")},
      {"? session.", ElementsAre()},  // Nothing has no members
  };
  for (const auto& r : rows) {
    const Completion c = Complete(session, r.line);
    EXPECT_THAT(c.candidates, r.candidates) << r.line;
  }
  EXPECT_EQ(Complete(session, "? s.InW").start, 4u);
  EXPECT_EQ(Complete(session, "? \"ёж\" & s.InW").start, 13u) << "bytes, past two-byte letters";
}

}  // namespace
}  // namespace tsrt
