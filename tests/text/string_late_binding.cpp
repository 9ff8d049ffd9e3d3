// clsZKString by name: the parameter names hosts pass, written-back arguments, errors and
// the root object's factories.
#include "text/text_test_util.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Call;

TEST(StringByName, TakesItsOwnParameterNamesAndWritesArgumentsBack) {
  Ref<Object> s = CreateObject(u"TSRuntimeLib.clsZKString");
  std::vector<Argument> args = {{u"Expression", u"a-b-c"}, {u"FilteringStr", u"-"},
                                {u"Iclude", true}, {u"SelStart", 3}};
  EXPECT_EQ(Call(s, u"Filter", args), Variant(u"--"));
  EXPECT_EQ(args[3].value, Variant(1));
  args = {{u"SourceString", u"中ab"}, {u"DestString", Variant()}};
  EXPECT_EQ(Call(s, u"ConvWin2Dos", args), Variant(true));
  EXPECT_EQ(args[0].value, Variant(u"?ab")) << "the ANSI round trip of the source";
  EXPECT_EQ(args[1].value, Variant(u"?a"));
  args = {{u"", u"a.b.c"}, {u"SepStr", u"."}, {u"InstrLeft", true}, {u"SepInclude", true}};
  EXPECT_EQ(Call(s, u"GetRight", args), Variant(u".b.c"));
  args = {{u"", u"abc"}, {u"", u"b"}, {u"SearchLen", -7}};
  testing::ExpectError([&] { Call(s, u"InstrRight", args); }, xcZKERR_STRING_INSTRRIGHT,
                       u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -7", "InstrRight");
  args = {{u"", u"abc"}, {u"", u"b"}, {u"Include", true}};
  testing::ExpectRuntimeError([&] { Call(s, u"Filter", args); },
                              RuntimeError::kNamedArgumentNotFound, "the parameter is Iclude");
}

TEST(StringByName, TheRootObjectHandsOutNewStringAndArrayObjectsOnEveryRead) {
  Ref<Object> root = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> none;
  const Variant one = Call(root, u"GetObjString", none), two = Call(root, u"GetObjString", none);
  EXPECT_EQ(one.asObject()->classInfo().name, u"clsZKString");
  EXPECT_NE(one.asObject().get(), two.asObject().get()) << "a new object on every read";
  EXPECT_EQ(Call(root, u"GetObjArray", none).asObject()->classInfo().name, u"clsZKArray");
}

}  // namespace
}  // namespace tsruntime
