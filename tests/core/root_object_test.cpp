// The root object: Init, the per-thread interface language, and the reset that every new
// root object makes; early bound and through late binding.
#include <gtest/gtest.h>

#include <thread>

#include "support/outcome.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

// The late-bound Language (or `member`) as its type and text.
std::string Late(Object& lib, InvokeKind kind = InvokeKind::kCall, std::vector<Argument> args = {},
                 StringView member = u"Language") {
  const Variant result = Invoke(lib, member, kind, args);
  return testing::U8(TypeName(result.type()) + u" " + ToString(result));
}

TEST(RootObject, InitsAndKeepsOneLanguagePerThreadThatEachNewRootObjectResets) {
  SetInterfaceLanguage(xcZKLANG_ENG);
  auto lib = New<clsZKRunTimeLib>();
  EXPECT_EQ(Late(*lib, InvokeKind::kCall, {}, u"init"), "Boolean True");
  EXPECT_EQ(Late(*lib), "Long 0") << "a fresh root object reports Russian";
  Late(*lib, InvokeKind::kLet, {{{}, Variant(u"7")}});
  EXPECT_EQ(testing::Outcome([&] { Late(*lib, InvokeKind::kLet, {{{}, u"x"}}); }), "error 13");
  EXPECT_EQ(lib->Language(), 7) << "any value is stored unchecked; a refused one changes nothing";
  Ref<Object> second = CreateObject(u"clsZKRunTimeLib");
  EXPECT_EQ(lib->Language(), 0) << "a new root object resets the language of the thread";
  Late(*second, InvokeKind::kLet, {{{}, Variant(int32_t{1})}});
  EXPECT_EQ(testing::U8(LanguageText(u"Русский", u"English")), "English");
  EXPECT_EQ(Late(*lib), "Long 1") << "all root objects of a thread share the setting";
  second = lib = nullptr;
  EXPECT_EQ(InterfaceLanguage(), 1) << "the setting outlives the last root object";
  SetInterfaceLanguage(2);
  int32_t seen_by_other = -1;
  std::thread([&] {
    seen_by_other = InterfaceLanguage();
    New<clsZKRunTimeLib>()->LetLanguage(5);
  }).join();
  EXPECT_EQ(seen_by_other, 0) << "a new thread starts with Russian";
  EXPECT_EQ(InterfaceLanguage(), 2) << "the other thread's root object did not reset this one";
}

}  // namespace
}  // namespace tsruntime
