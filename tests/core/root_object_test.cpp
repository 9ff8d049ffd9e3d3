// The root object: Init, the per-thread interface language, and the reset that every new
// root object makes; early bound and through late binding.
#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "support/outcome.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

Variant Late(Object& lib, StringView member, InvokeKind kind = InvokeKind::kCall,
             std::vector<Argument> args = {}) {
  return Invoke(lib, member, kind, args);
}

int32_t LateLanguage(Object& lib) { return Late(lib, u"Language").asLong(); }

TEST(RootObject, InitAlwaysReturnsTrue) {
  auto lib = New<clsZKRunTimeLib>();
  EXPECT_TRUE(lib->Init());
  EXPECT_EQ(Late(*CreateObject(u"TSRuntimeLib.clsZKRunTimeLib"), u"init"), Variant(true));
}

TEST(RootObject, StoresAnyLanguageValueAndANewRootObjectResetsIt) {
  SetInterfaceLanguage(xcZKLANG_ENG);
  auto lib = New<clsZKRunTimeLib>();
  EXPECT_EQ(lib->Language(), xcZKLANG_RUS) << "a fresh root object reports Russian";
  EXPECT_EQ(LateLanguage(*lib), 0);
  for (const Variant& value : {Variant(int32_t{7}), Variant(u"1"), Variant(int32_t{-5})}) {
    Late(*lib, u"Language", InvokeKind::kLet, {{String(), value}});
    EXPECT_EQ(LateLanguage(*lib), ToLong(value)) << "stored unchecked";
    EXPECT_EQ(testing::U8(LanguageText(u"Русский", u"English")),
              ToLong(value) == 0 ? "Русский" : "English");
  }
  lib->LetLanguage(7);
  EXPECT_EQ(testing::RaisedNumber(
                [&] { Late(*lib, u"Language", InvokeKind::kLet, {{String(), Variant(u"x")}}); }),
            13);
  EXPECT_EQ(lib->Language(), 7) << "a refused value leaves the setting alone";

  Ref<Object> second = CreateObject(u"clsZKRunTimeLib");
  EXPECT_EQ(lib->Language(), 0) << "a new root object resets the language of the thread";
  Late(*second, u"Language", InvokeKind::kLet, {{String(), Variant(int32_t{1})}});
  EXPECT_EQ(LateLanguage(*lib), 1) << "every root object on the thread shares one setting";
  second = nullptr;
  lib = nullptr;
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
