// clsZKSystem on a private X server: the keyboard layout switch with its target quirk
// and its walk back through the groups, and the pointer position.
#include <gtest/gtest.h>

#include "system/xvfb_display.h"
#include "tsruntime/clsZKSystem.h"

namespace tsruntime {
namespace {

class SystemOnX : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(x.ready()) << "Xvfb did not start"; }
  testing::XvfbDisplay x;
  Ref<clsZKSystem> sys = New<clsZKSystem>();
};

TEST_F(SystemOnX, SetKeyboardLayoutSelectsRussianForEveryNonZeroIdentifier) {
  struct Step {
    const char* what;
    const char* layouts;  // installed before the step when not null
    int start_group;
    int32_t layout_id;
    bool result;
    int group_after;
  };
  const Step steps[] = {
      {"English asks for Russian, which is one step back", "us,ru", 0, xcZKKBDL_ENGLISH, true, 1},
      {"Russian when Russian is active stays", nullptr, 1, xcZKKBDL_RUSSIAN, true, 1},
      {"zero asks for English", nullptr, 1, 0, true, 0},
      {"zero when English is active stays", nullptr, 0, 0, true, 0},
      {"any other number asks for Russian too", nullptr, 0, 7, true, 1},
      {"from the middle the walk goes back through the first to the last", "us,de,ru", 1,
       xcZKKBDL_RUSSIAN, true, 2},
      {"zero from the last goes back two steps", nullptr, 2, 0, true, 0},
      {"a ring without the target ends where it started", "us,de", 0, xcZKKBDL_RUSSIAN, false, 0},
      {"one layout without the target fails after one step", "us", 0, xcZKKBDL_RUSSIAN, false, 0},
      {"one layout that is the target succeeds", "ru", 0, xcZKKBDL_RUSSIAN, true, 0},
  };
  for (const Step& s : steps) {
    if (s.layouts) {
      ASSERT_TRUE(x.SetLayouts(s.layouts, s.start_group)) << s.what;
    } else {
      ASSERT_TRUE(x.LockGroup(s.start_group)) << s.what;
    }
    EXPECT_EQ(sys->SetKeyboardLayout(s.layout_id), s.result) << s.what;
    EXPECT_EQ(x.ActiveGroup(), s.group_after) << s.what;
  }
}

TEST_F(SystemOnX, LateBoundSetKeyboardLayoutDefaultsToEnglishAndSoToRussian) {
  ASSERT_TRUE(x.SetLayouts("us,ru", 0));
  std::vector<Argument> none;
  EXPECT_EQ(Invoke(*sys, u"SetKeyboardLayout", InvokeKind::kCall, none), Variant(true));
  EXPECT_EQ(x.ActiveGroup(), 1);
  std::vector<Argument> zero{{u"LayoutID", Variant(int32_t{0})}};
  EXPECT_EQ(Invoke(*sys, u"SetKeyboardLayout", InvokeKind::kCall, zero), Variant(true));
  EXPECT_EQ(x.ActiveGroup(), 0);
}

TEST_F(SystemOnX, GetMousePosReadsThePointer) {
  const struct { int x, y; } points[] = {{123, 45}, {0, 0}, {639, 479}};
  for (const auto& p : points) {
    XWarpPointer(x.x(), None, DefaultRootWindow(x.x()), 0, 0, 0, 0, p.x, p.y);
    XSync(x.x(), False);
    int32_t px = -1, py = -1;
    sys->GetMousePos(px, py);
    EXPECT_EQ(px, p.x);
    EXPECT_EQ(py, p.y);
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
  EXPECT_EQ(px, 7);
  EXPECT_EQ(py, 8);
  std::vector<Argument> args{{{}, Variant(int32_t{7})}, {{}, Variant(int32_t{8})}};
  Invoke(*sys, u"GetMousePos", InvokeKind::kCall, args);
  EXPECT_EQ(args[0].value, Variant(int32_t{7})) << "written back unchanged";
  if (old) setenv("DISPLAY", saved.c_str(), 1);
}

}  // namespace
}  // namespace tsruntime
