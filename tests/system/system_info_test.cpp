// clsZKSystem without a display: GUIDs, the computer and user names, and objects from
// their addresses.
#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>

#include "support/outcome.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/clsZKRunTimeLib.h"
#include "tsruntime/clsZKSystem.h"

namespace tsruntime {
namespace {

using testing::U8;

// The first line a shell command prints.
std::string Shell(const char* command) {
  std::string line;
  if (FILE* p = popen(command, "r")) {
    char buf[512];
    if (fgets(buf, sizeof buf, p)) line = buf;
    pclose(p);
  }
  return line.substr(0, line.find('\n'));
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
  EXPECT_EQ(U8(user.substr(0, user.size() - 1)), Shell("id -un"));
  const String computer = sys->GetComputerName();
  EXPECT_EQ(U8(computer), Shell("hostname"));
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

}  // namespace
}  // namespace tsruntime
