// clsZKSystem without a display: GUIDs, the computer and user names, and objects from
// their addresses.
#include <gtest/gtest.h>

#include <cstdio>
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
