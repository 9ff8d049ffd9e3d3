// clsZKString by name: parameter names, written-back arguments, errors and the root object's
// factories.
#include <map>

#include "text/text_test_util.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Call;

TEST(StringByName, DeclaresEveryMemberWithItsExactParameterNames) {
  // Each member's parameters; "&" marks one written back to the caller.
  const std::map<std::string, std::string> expected = {
      {"InstrRight", "Expression SearchStr SearchLen CompareType"},
      {"Replace", "Expression SearchStr ReplaceStr CompareType"},
      {"Filter", "Expression FilteringStr Iclude CompareType &SelStart"},
      {"GetLeft", "Expression SepStr InstrRight SepInclude AllIfNoMatch"},
      {"GetRight", "Expression SepStr InstrLeft SepInclude AllIfNoMatch"},
      {"Trim", "Expression CharsTrim TrimType CompareType &SelStart"},
      {"ChangeCase", "SourceString CaseType WordDelimiters"}, {"ArrayJoin", "DataArray"},
      {"ArraySplit", "DataString"}, {"InWords", "Expression IncludeUnitNames"},
      {"ConvMKD", "Expression"}, {"ConvMKI", "Expression"}, {"ConvMKL", "Expression"},
      {"ConvMKS", "Expression"}, {"ConvCVD", "&Expression"}, {"ConvCVI", "&Expression"},
      {"ConvCVL", "&Expression"}, {"ConvCVS", "&Expression"},
      {"ConvWin2Dos", "&SourceString &DestString"}, {"IsVarEQ", "Expression0 Expression1"},
      {"StrToVarNull", "Expression TrimLen"}};
  std::map<std::string, std::string> got;
  for (const MemberInfo& m : CreateObject(u"TSRuntimeLib.clsZKString")->classInfo().members) {
    std::string& params = got[ToUtf8(m.name)];
    for (const ParamInfo& p : m.params) {
      params += (params.empty() ? "" : " ") + std::string(p.writesBack ? "&" : "") + ToUtf8(p.name);
    }
  }
  EXPECT_EQ(got, expected);
}

TEST(StringByName, WritesArgumentsBackAndPassesErrorsWhole) {
  Ref<Object> s = CreateObject(u"TSRuntimeLib.clsZKString");
  std::vector<Argument> args = {{u"", u"a-b-c"}, {u"", u"-"}, {u"SelStart", int32_t{4}}};
  EXPECT_EQ(Call(s, u"Filter", args), Variant(u"abc"));
  EXPECT_EQ(args[2].value, Variant(int32_t{2}));
  args = {{u"", u"xxabcxx"}, {u"", u"x"}, {u"", int32_t{3}}, {u"", int32_t{0}}, {u"", int32_t{7}}};
  EXPECT_EQ(Call(s, u"Trim", args), Variant(u"abc"));
  EXPECT_EQ(args[4].value, Variant(int32_t{3}));
  args = {{u"", u"中ab"}, {u"", Variant()}};
  EXPECT_EQ(Call(s, u"ConvWin2Dos", args), Variant(true));
  EXPECT_EQ(args[0].value, Variant(u"?ab")) << "the ANSI round trip of the source";
  EXPECT_EQ(args[1].value, Variant(u"?a"));
  args = {{u"", u"abc"}, {u"", u"b"}, {u"", int32_t{-7}}};
  testing::ExpectError([&] { Call(s, u"InstrRight", args); }, xcZKERR_STRING_INSTRRIGHT,
                       u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -7", "InstrRight");
}

TEST(StringByName, TheRootObjectHandsOutNewStringAndArrayObjectsOnEveryRead) {
  Ref<Object> root = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> none;
  for (auto [getter, name] : {std::pair{u"GetObjString", u"clsZKString"},
                              std::pair{u"GetObjArray", u"clsZKArray"}}) {
    const Ref<Object> first = Call(root, getter, none).asObject();
    EXPECT_NE(first.get(), Call(root, getter, none).asObject().get()) << ToUtf8(getter);
    EXPECT_EQ(first->classInfo().name, name);
  }
}

}  // namespace
}  // namespace tsruntime
