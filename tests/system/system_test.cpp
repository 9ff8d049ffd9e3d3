// clsZKSystem: GUIDs, the computer and user names, objects from their addresses, and on a
// private X server the keyboard layout switch with its target quirk and its walk back
// through the groups, and the pointer position.
#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>

#include "support/child_process.h"
#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
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
  for (int i = 0; i < 100; ++i) {
    const String guid = sys->CreateGUID();
    EXPECT_TRUE(std::regex_match(U8(guid), form)) << U8(guid);
    seen.insert(guid);
  }
  EXPECT_EQ(seen.size(), 100u);
}

TEST(SystemInfo, TheUserNameEndsInAZeroCharacterAndTheComputerNameDoesNot) {
  auto sys = New<clsZKSystem>();
  const String user = sys->GetUserName();
  ASSERT_FALSE(user.empty());
  EXPECT_EQ(user.back(), u'\0');
  EXPECT_EQ(U8(user.substr(0, user.size() - 1)), Line("whoami"));
  EXPECT_EQ(U8(sys->GetComputerName()), Line("hostname"));
  std::vector<Argument> none;
  EXPECT_EQ(Invoke(*sys, u"GetUserName", InvokeKind::kCall, none), Variant(user));
}

// The platform keeps both names in UTF-8. A child process of its own, with its own host
// name and its own view of /etc/passwd, takes each name in turn.
TEST(SystemInfo, NamesAreThePlatformsTextThroughTheAnsiCodePage) {
  const struct {
    const char* platform;
    const char16_t* computer;
    const char16_t* user;
  } rows[] = {
      {"хост", u"хост", u"хост"},
      {"jürgen-PC", u"j?rgen-PC", u"j?rgen-PC"},  // 1251 has no ü
      {"Ёлка€", u"Ёлка€", u"Ёлка€"},
  };
  char passwd[] = "/tmp/tsrt-passwd-XXXXXX";
  const int fd = mkstemp(passwd);
  ASSERT_GE(fd, 0);
  close(fd);
  int out[2];
  ASSERT_EQ(pipe(out), 0);
  const pid_t child = fork();
  if (child == 0) {
    close(out[0]);
    // Skipped (exit 3) where the process may not have namespaces of its own.
    if (unshare(CLONE_NEWNS | CLONE_NEWUTS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount(passwd, "/etc/passwd", nullptr, MS_BIND, nullptr) != 0) {
      _exit(3);
    }
    auto sys = New<clsZKSystem>();
    std::string seen;
    for (const auto& r : rows) {
      std::ofstream(passwd) << r.platform << ":x:" << geteuid() << ":0::/:/bin/sh\n";
      if (sethostname(r.platform, strlen(r.platform)) != 0) _exit(3);
      seen += U8(sys->GetComputerName()) + "|" + U8(sys->GetUserName()) + "\n";
    }
    if (write(out[1], seen.data(), seen.size()) < 0) _exit(4);
    _exit(0);
  }
  close(out[1]);
  std::string seen;
  char buf[512];
  for (ssize_t n; (n = read(out[0], buf, sizeof buf)) > 0;) seen.append(buf, n);
  close(out[0]);
  int status = 0;
  waitpid(child, &status, 0);
  unlink(passwd);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 3) GTEST_SKIP() << "no namespaces here";
  std::string expected;
  for (const auto& r : rows) expected += U8(r.computer) + "|" + U8(r.user) + std::string(1, '\0') + "\n";
  EXPECT_EQ(seen, expected);
}

TEST(SystemInfo, ObjectFromPtrTurnsAnAddressFromObjPtrIntoANewReference) {
  auto sys = New<clsZKSystem>();
  Ref<Object> target = New<clsZKRunTimeLib>();
  const double address = sys->ObjPtr(target);
  EXPECT_EQ(target->RefCount(), 1) << "ObjPtr adds no reference";

  const struct {
    const char* what;
    Variant address;
  } forms[] = {
      {"as the Double ObjPtr gives", Variant(address)},
      {"as a Currency", Variant(Currency::FromRaw(static_cast<int64_t>(address) * 10000))},
      {"as a Decimal", Variant(Decimal::FromInteger(static_cast<int64_t>(address)))},
  };
  for (const auto& f : forms) {
    const Ref<Object> back = sys->ObjectFromPtr(f.address);
    EXPECT_EQ(back.get(), target.get()) << f.what;
    EXPECT_EQ(target->RefCount(), 2) << f.what << ": one reference added";
  }

  std::vector<Argument> args{{{}, Variant(address)}};
  EXPECT_EQ(Invoke(*sys, u"ObjectFromPtr", InvokeKind::kCall, args).asObject().get(), target.get());

  const struct {
    const char* what;
    Variant address;
  } nothing[] = {
      {"zero", Variant(int32_t{0})},
      {"an address ObjPtr never gave", Variant(address + 8)},
      {"a fraction", Variant(address + 0.5)},
      {"a negative number", Variant(-address)},
  };
  for (const auto& n : nothing) EXPECT_FALSE(sys->ObjectFromPtr(n.address)) << n.what;

  target = nullptr;
  EXPECT_FALSE(sys->ObjectFromPtr(Variant(address))) << "the object is gone";
  EXPECT_EQ(sys->ObjPtr(nullptr), 0.0);
}

TEST(SystemInfo, TheRootObjectHandsOutANewSystemAndRegistryObjectOnEachRead) {
  auto lib = New<clsZKRunTimeLib>();
  for (const char16_t* member : {u"GetObjSystem", u"GetObjRegistry"}) {
    std::vector<Argument> none;
    const Variant a = Invoke(*lib, member, InvokeKind::kCall, none);
    const Variant b = Invoke(*lib, member, InvokeKind::kCall, none);
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

// Late bound, the layout defaults to English, which asks for Russian.
TEST_F(SystemOnX, SetKeyboardLayoutSelectsRussianForEveryNonZeroIdentifier) {
  const struct {
    const char* what;
    const char* layouts;  // installed before the step when not null
    int start_group;
    std::optional<int32_t> layout_id;  // none: late bound without an argument
    bool result;
    int group_after;
  } steps[] = {
      {"English asks for Russian, which is one step back", "us,ru", 0, xcZKKBDL_ENGLISH, true, 1},
      {"Russian when Russian is active stays", nullptr, 1, xcZKKBDL_RUSSIAN, true, 1},
      {"zero asks for English", nullptr, 1, 0, true, 0},
      {"zero when English is active stays", nullptr, 0, 0, true, 0},
      {"any other number asks for Russian too", nullptr, 0, 7, true, 1},
      {"late bound without an argument: English, so Russian", nullptr, 0, std::nullopt, true, 1},
      {"from the middle the walk goes back through the first to the last", "us,de,ru", 1, xcZKKBDL_RUSSIAN, true, 2},
      {"zero from the last goes back two steps", nullptr, 2, 0, true, 0},
      {"a ring without the target ends where it started", "us,de", 0, xcZKKBDL_RUSSIAN, false, 0},
      {"one layout without the target fails after one step", "us", 0, xcZKKBDL_RUSSIAN, false, 0},
      {"one layout that is the target succeeds", "ru", 0, xcZKKBDL_RUSSIAN, true, 0},
  };
  for (const auto& s : steps) {
    ASSERT_TRUE(s.layouts ? x.SetLayouts(s.layouts, s.start_group) : x.LockGroup(s.start_group)) << s.what;
    std::vector<Argument> args;
    EXPECT_EQ(s.layout_id ? sys->SetKeyboardLayout(*s.layout_id)
                          : Invoke(*sys, u"SetKeyboardLayout", InvokeKind::kCall, args) == Variant(true),
              s.result) << s.what;
    EXPECT_EQ(x.ActiveGroup(), s.group_after) << s.what;
  }
  ASSERT_TRUE(x.SetLayouts("us,ru", 1));
  std::vector<Argument> zero{{u"LayoutID", Variant(int32_t{0})}};
  EXPECT_EQ(Invoke(*sys, u"SetKeyboardLayout", InvokeKind::kCall, zero), Variant(true));
  EXPECT_EQ(x.ActiveGroup(), 0) << "late bound zero";
}

TEST_F(SystemOnX, GetMousePosReadsThePointer) {
  for (const auto& [px, py] : {std::pair{123, 45}, {0, 0}, {639, 479}}) {
    x.MovePointer(0, px, py);
    int32_t got_x = -1, got_y = -1;
    sys->GetMousePos(got_x, got_y);
    EXPECT_EQ(std::to_string(got_x) + "," + std::to_string(got_y), std::to_string(px) + "," + std::to_string(py));
  }
}

TEST(SystemWithoutDisplay, LayoutCallsFailAndThePointerLeavesItsArgumentsAlone) {
  const char* old = getenv("DISPLAY");
  const std::string saved = old ? old : "";
  unsetenv("DISPLAY");
  auto sys = New<clsZKSystem>();
  EXPECT_FALSE(sys->SetKeyboardLayout(0));
  EXPECT_FALSE(sys->SetKeyboardLayout(xcZKKBDL_RUSSIAN));
  int32_t px = 7, py = 8;
  sys->GetMousePos(px, py);
  EXPECT_EQ(px * 10 + py, 78);
  std::vector<Argument> args{{{}, Variant(int32_t{7})}, {{}, Variant(int32_t{8})}};
  Invoke(*sys, u"GetMousePos", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(int32_t{7})) << "written back unchanged";
  if (old) setenv("DISPLAY", saved.c_str(), 1);
}

}  // namespace
}  // namespace tsruntime
