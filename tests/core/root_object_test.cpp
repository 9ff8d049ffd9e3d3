// The root object: Init, the per-thread interface language, and the reset that every new
// root object makes; early bound and through late binding.
#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "support/outcome.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

int32_t LateLanguage(Object& lib) {
  std::vector<Argument> none;
  return Invoke(lib, u"Language", InvokeKind::kCall, none).asLong();
}

void LetLateLanguage(Object& lib, Variant value) {
  std::vector<Argument> args = {{String(), std::move(value)}};
  Invoke(lib, u"Language", InvokeKind::kLet, args);
}

TEST(RootObject, InitAlwaysReturnsTrue) {
  auto lib = New<clsZKRunTimeLib>();
  EXPECT_TRUE(lib->Init());
  EXPECT_TRUE(lib->Init());
  Ref<Object> late = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> none;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(Invoke(*late, u"init", InvokeKind::kCall, none), Variant(true));
  }
}

TEST(RootObject, AFreshRootObjectReportsRussian) {
  SetInterfaceLanguage(xcZKLANG_ENG);
  auto lib = New<clsZKRunTimeLib>();
  EXPECT_EQ(lib->Language(), xcZKLANG_RUS);
  EXPECT_EQ(LateLanguage(*lib), 0);
  EXPECT_EQ(LateLanguage(*CreateObject(u"clsZKRunTimeLib")), 0);
}

TEST(RootObject, StoresAnyLanguageValueUnchecked) {
  auto lib = New<clsZKRunTimeLib>();
  const std::pair<Variant, int32_t> rows[] = {
      {Variant(int32_t{7}), 7},        {Variant(int32_t{1}), 1},   {Variant(int32_t{-5}), -5},
      {Variant(int32_t{INT32_MAX}), INT32_MAX}, {Variant(u"3"), 3}, {Variant(int32_t{0}), 0},
  };
  for (const auto& [value, stored] : rows) {
    LetLateLanguage(*lib, value);
    EXPECT_EQ(lib->Language(), stored);
    EXPECT_EQ(LateLanguage(*lib), stored);
    EXPECT_EQ(InterfaceLanguage(), stored);
    EXPECT_EQ(testing::U8(LanguageText(u"Русский", u"English")),
              stored == 0 ? "Русский" : "English")
        << "language " << stored;
  }
  lib->LetLanguage(7);
  EXPECT_EQ(LateLanguage(*lib), 7);
  EXPECT_EQ(testing::RaisedNumber([&] { LetLateLanguage(*lib, Variant(u"English")); }), 13);
  EXPECT_EQ(lib->Language(), 7) << "a refused value leaves the setting alone";
}

TEST(RootObject, ASecondRootObjectResetsTheLanguageForBoth) {
  auto first = New<clsZKRunTimeLib>();
  first->LetLanguage(xcZKLANG_ENG);
  EXPECT_EQ(LateLanguage(*first), 1);
  Ref<Object> second = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  EXPECT_EQ(first->Language(), 0);
  EXPECT_EQ(LateLanguage(*first), 0);
  EXPECT_EQ(LateLanguage(*second), 0);

  LetLateLanguage(*second, Variant(int32_t{1}));
  EXPECT_EQ(first->Language(), 1) << "every root object on the thread shares one setting";
  second = nullptr;
  first = nullptr;
  EXPECT_EQ(InterfaceLanguage(), 1) << "the setting outlives the last root object";
}

TEST(RootObject, EachThreadHasItsOwnLanguage) {
  auto lib = New<clsZKRunTimeLib>();
  lib->LetLanguage(1);
  std::latch both_set(2);
  int32_t seen_at_start = -1, seen_after = -1;
  std::thread other([&] {
    seen_at_start = InterfaceLanguage();
    auto own = New<clsZKRunTimeLib>();
    own->LetLanguage(5);
    both_set.arrive_and_wait();
    seen_after = own->Language();
  });
  lib->LetLanguage(2);
  both_set.arrive_and_wait();
  other.join();
  EXPECT_EQ(seen_at_start, 0) << "a new thread starts with Russian";
  EXPECT_EQ(seen_after, 5);
  EXPECT_EQ(lib->Language(), 2) << "the other thread's root object did not reset this thread";
}

}  // namespace
}  // namespace tsruntime
