// clsZKSystem: GUIDs, the computer and user names, objects from their addresses, and on a
// private X server the keyboard layout switch with its target quirk and its walk back
// through the groups, and the pointer position.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <regex>

#include "support/child_process.h"
#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKRunTimeLib.h"
#include "tsruntime/clsZKSystem.h"
// X11's macros (Bool, Status) after everything else.
#include "support/xvfb_server.h"

namespace tsruntime {
namespace {

using testing::U8;
// The first line a program prints.
std::string Line(const char* program) {
  const std::string out = testing::RunProgram({program}).output;
  return out.substr(0, out.find('\n'));
}

TEST(SystemInfo, CreateGuidGivesDistinctUpperCaseGuidsWithoutBraces) {
  auto sys = New<clsZKSystem>();
  const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}");
  std::set<String> seen;
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(std::regex_match(U8(*seen.insert(sys->CreateGUID()).first), form));
  EXPECT_EQ(seen.size(), 100u);
}

// The user name ends in a zero character and the computer name does not. The platform
// keeps both names in UTF-8, read through the ANSI code page: this test runs again in a child with a host name and a view
// of /etc/passwd of its own, which takes each name in turn.
TEST(SystemInfo, NamesAreAnsiTextAndOnlyTheUserNameEndsInAZero) {
  auto sys = New<clsZKSystem>();
  if (!testing::InTestChild()) {
    EXPECT_EQ(sys->GetUserName(), FromUtf8(Line("whoami")) + u'\0');
    EXPECT_EQ(U8(sys->GetComputerName()), Line("hostname"));
    const auto child = testing::RunTestInChild("SystemInfo.NamesAreAnsiTextAndOnlyTheUserNameEndsInAZero");
    if (child.output.find("[  SKIPPED ]") != std::string::npos) GTEST_SKIP() << child.output;
    EXPECT_EQ(child.exit_code, 0) << child.output;
    return;
  }
  const struct { const char* platform; const char16_t* read; } rows[] = {
      {"хост", u"хост"}, {"jürgen-PC", u"j?rgen-PC"}, {"Ёлка€", u"Ёлка€"}};  // 1251 has no ü
  char passwd[] = "/tmp/tsrt-passwd-XXXXXX";
  close(mkstemp(passwd));
  if (unshare(CLONE_NEWNS | CLONE_NEWUTS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount(passwd, "/etc/passwd", nullptr, MS_BIND, nullptr) != 0) {
    unlink(passwd);
    GTEST_SKIP() << "no namespaces here";
  }
  for (const auto& r : rows) {
    std::ofstream(passwd) << r.platform << ":x:" << geteuid() << ":0::/:/bin/sh\n";
    ASSERT_EQ(sethostname(r.platform, strlen(r.platform)), 0);
    EXPECT_EQ(sys->GetComputerName(), r.read);
    EXPECT_EQ(sys->GetUserName(), r.read + String(1, u'\0'));
  }
  unlink(passwd);
}

TEST(SystemInfo, ObjectFromPtrTurnsAnAddressFromObjPtrIntoANewReference) {
  auto sys = New<clsZKSystem>();
  Ref<Object> target = New<clsZKRunTimeLib>();
  const double address = sys->ObjPtr(target);
  const struct { const char* what; Variant address; bool found; } rows[] = {
      {"the Double ObjPtr gives", Variant(address), true},
      {"the address as a Currency", Variant(Currency::FromRaw(static_cast<int64_t>(address) * 10000)), true},
      {"zero", Variant(int32_t{0}), false},
      {"an address ObjPtr never gave", Variant(address + 8), false},
      {"a fraction", Variant(address + 0.5), false},
      {"a negative number", Variant(-address), false},
  };
  for (const auto& r : rows) {
    const Ref<Object> back = sys->ObjectFromPtr(r.address);
    EXPECT_EQ(back.get(), r.found ? target.get() : nullptr) << r.what;
    EXPECT_EQ(target->RefCount(), r.found ? 2 : 1) << r.what << ": ObjPtr adds no reference, ObjectFromPtr one";
  }
  target = nullptr;
  EXPECT_FALSE(sys->ObjectFromPtr(Variant(address))) << "the object is gone";
  EXPECT_EQ(sys->ObjPtr(nullptr), 0.0);
}

TEST(SystemInfo, TheRootObjectHandsOutANewObjectOnEachRead) {
  auto lib = New<clsZKRunTimeLib>();
  for (const char16_t* member : {u"GetObjSystem", u"GetObjRegistry", u"GetObjMem"}) {
    std::vector<Argument> none;
    const Variant a = Invoke(*lib, member, InvokeKind::kCall, none), b = Invoke(*lib, member, InvokeKind::kCall, none);
    ASSERT_TRUE(a.isObject());
    EXPECT_EQ(u"GetObj" + a.asObject()->classInfo().name.substr(5), String(member));
    EXPECT_NE(a.asObject().get(), b.asObject().get());
  }
}

class SystemOnX : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(x.ready()) << "Xvfb did not start"; }
  testing::XvfbServer x{640, 480};
  Ref<clsZKSystem> sys = New<clsZKSystem>();
};

// Every non-zero identifier asks for Russian, zero for English; late bound the identifier
// defaults to English. The switch walks back through the groups until it finds the target.
// Each step starts from group `from`, with `layouts` installed first when given, and calls
// late bound without an argument when it has no identifier.
TEST_F(SystemOnX, SetKeyboardLayoutSelectsRussianForEveryNonZeroIdentifier) {
  const struct { const char* what; const char* layouts; int from; std::optional<int32_t> id; bool result; int to; } steps[] = {
      {"English asks for Russian, which is one step back", "us,ru", 0, xcZKKBDL_ENGLISH, true, 1},
      {"Russian when Russian is active stays", nullptr, 1, xcZKKBDL_RUSSIAN, true, 1},
      {"zero asks for English", nullptr, 1, 0, true, 0},
      {"any other number asks for Russian too", nullptr, 0, 7, true, 1},
      {"late bound without an argument: English, so Russian", nullptr, 0, std::nullopt, true, 1},
      {"from the middle the walk goes back through the first to the last", "us,de,ru", 1, xcZKKBDL_RUSSIAN, true, 2},
      {"zero from the last goes back two steps", nullptr, 2, 0, true, 0},
      {"a ring without the target ends where it started", "us,de", 0, xcZKKBDL_RUSSIAN, false, 0},
      {"one layout without the target fails after one step", "us", 0, xcZKKBDL_RUSSIAN, false, 0},
      {"one layout that is the target succeeds", "ru", 0, xcZKKBDL_RUSSIAN, true, 0},
  };
  for (const auto& s : steps) {
    ASSERT_TRUE(s.layouts ? x.SetLayouts(s.layouts, s.from) : x.LockGroup(s.from)) << s.what;
    std::vector<Argument> none;
    EXPECT_EQ(s.id ? sys->SetKeyboardLayout(*s.id) : Invoke(*sys, u"SetKeyboardLayout", InvokeKind::kCall, none) == Variant(true),
              s.result) << s.what;
    EXPECT_EQ(x.ActiveGroup(), s.to) << s.what;
  }
}

TEST_F(SystemOnX, GetMousePosReadsThePointer) {
  for (const auto& [px, py] : {std::pair{123, 45}, {0, 0}, {639, 479}}) {
    int32_t got_x = -1, got_y = -1;
    x.MovePointer(0, px, py);
    sys->GetMousePos(got_x, got_y);
    EXPECT_EQ(std::pair(got_x, got_y), std::pair(px, py));
  }
}

TEST(SystemWithoutDisplay, LayoutCallsFailAndThePointerLeavesItsArgumentsAlone) {
  if (!testing::InTestChild()) {
    const auto child = testing::RunTestInChild("SystemWithoutDisplay.*", {{"DISPLAY", std::nullopt}});
    EXPECT_EQ(child.exit_code, 0) << child.output;
    return;
  }
  auto sys = New<clsZKSystem>();
  EXPECT_FALSE(sys->SetKeyboardLayout(0) || sys->SetKeyboardLayout(xcZKKBDL_RUSSIAN));
  std::vector<Argument> args{{{}, Variant(int32_t{7})}, {{}, Variant(int32_t{8})}};
  Invoke(*sys, u"GetMousePos", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(int32_t{7})) << "written back unchanged";
  EXPECT_EQ(args[1].value, Variant(int32_t{8})) << "written back unchanged";
}

}  // namespace
}  // namespace tsruntime
