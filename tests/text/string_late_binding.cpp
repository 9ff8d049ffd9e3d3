// clsZKString by name: parameter names, defaults, written-back arguments, errors and the
// root object's factory.
#include "text/text_test_util.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using testing::Call;

Argument Named(const char16_t* name, Variant value) { return Argument{name, std::move(value)}; }
Argument At(Variant value) { return Argument{{}, std::move(value)}; }

TEST(StringByName, DeclaresEveryMemberWithItsExactParameterNames) {
  // "&" marks a parameter written back to the caller.
  const std::vector<std::string> expected = {
      "InstrRight(Expression SearchStr SearchLen CompareType)",
      "Replace(Expression SearchStr ReplaceStr CompareType)",
      "Filter(Expression FilteringStr Iclude CompareType &SelStart)",
      "GetLeft(Expression SepStr InstrRight SepInclude AllIfNoMatch)",
      "GetRight(Expression SepStr InstrLeft SepInclude AllIfNoMatch)",
      "Trim(Expression CharsTrim TrimType CompareType &SelStart)",
      "ChangeCase(SourceString CaseType WordDelimiters)", "ArrayJoin(DataArray)",
      "ArraySplit(DataString)", "InWords(Expression IncludeUnitNames)", "ConvMKD(Expression)",
      "ConvMKI(Expression)", "ConvMKL(Expression)", "ConvMKS(Expression)", "ConvCVD(&Expression)",
      "ConvCVI(&Expression)", "ConvCVL(&Expression)", "ConvCVS(&Expression)",
      "ConvWin2Dos(&SourceString &DestString)", "IsVarEQ(Expression0 Expression1)",
      "StrToVarNull(Expression TrimLen)"};
  const ClassInfo& info = CreateObject(u"TSRuntimeLib.clsZKString")->classInfo();
  EXPECT_EQ(info.members.size(), expected.size());
  for (const std::string& signature : expected) {
    const String name = FromAscii(signature.substr(0, signature.find('(')));
    const MemberInfo* m = info.find(name, MemberKind::kMethod);
    ASSERT_NE(m, nullptr) << signature;
    std::string got = ToUtf8(name) + "(";
    for (const ParamInfo& p : m->params) {
      got += (got.back() == '(' ? "" : " ") + std::string(p.writesBack ? "&" : "") + ToUtf8(p.name);
    }
    EXPECT_EQ(got + ")", signature);
  }
}

TEST(StringByName, FillsDefaultsWritesArgumentsBackAndPassesErrorsWhole) {
  Ref<Object> s = CreateObject(u"TSRuntimeLib.clsZKString");
  std::vector<Argument> args = {At(u"a-b-c"), At(u"-"), Named(u"SelStart", int32_t{4})};
  EXPECT_EQ(Call(s, u"Filter", args), Variant(u"abc"));
  EXPECT_EQ(args[2].value, Variant(int32_t{2}));
  args = {At(u"xxabcxx"), At(u"x"), At(int32_t{xcZK_TRIM_BOTH}), At(int32_t{0}), At(int32_t{7})};
  EXPECT_EQ(Call(s, u"Trim", args), Variant(u"abc"));
  EXPECT_EQ(args[4].value, Variant(int32_t{3}));
  args = {At(u"A中")};
  EXPECT_EQ(Call(s, u"ConvCVL", args), Variant(int32_t{0x3F41}));
  EXPECT_EQ(args[0].value, Variant(u"A?"));
  args = {At(u"Привет"), At(Variant())};
  EXPECT_EQ(Call(s, u"ConvWin2Dos", args), Variant(true));
  EXPECT_EQ(StringToAnsi(args[1].value.asString()),
            (std::vector<uint8_t>{0x8F, 0xE0, 0xA8, 0xA2, 0xA5}));
  args = {At(Currency::FromRaw(12345600))};
  EXPECT_EQ(ToUtf8(Call(s, u"InWords", args).asString()),
            "одна тысяча двести тридцать четыре рубля 56 копеек");
  args = {At(u"ABCabc"), At(u"BC"), Named(u"CompareType", int32_t{1})};
  EXPECT_EQ(Call(s, u"InstrRight", args), Variant(int32_t{5}));

  args = {At(u"abc"), At(u"b"), At(int32_t{-7})};
  testing::ExpectError([&] { Call(s, u"InstrRight", args); }, xcZKERR_STRING_INSTRRIGHT,
                       u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -7", "InstrRight");
  args = {At(u"abc"), At(u"b"), Named(u"Include", true)};
  testing::ExpectRuntimeError([&] { Call(s, u"Filter", args); },
                              RuntimeError::kNamedArgumentNotFound, "the parameter is Iclude");
}

TEST(StringByName, TheRootObjectHandsOutANewStringObjectOnEveryRead) {
  Ref<Object> root = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  std::vector<Argument> none;
  const Variant first = Call(root, u"GetObjString", none), second = Call(root, u"GetObjString", none);
  ASSERT_TRUE(first.isObject() && second.isObject());
  EXPECT_NE(first.asObject().get(), second.asObject().get());
  EXPECT_EQ(first.asObject()->classInfo().name, u"clsZKString");
  const Variant array = Call(root, u"GetObjArray", none);
  EXPECT_EQ(array.asObject()->classInfo().name, u"clsZKArray");
  EXPECT_NE(array.asObject().get(), Call(root, u"GetObjArray", none).asObject().get());
}

}  // namespace
}  // namespace tsruntime
