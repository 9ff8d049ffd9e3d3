// clsZKString by name: parameter names and defaults, written-back arguments, errors, the
// root object's factory and the registered enumerations.
#include <algorithm>

#include "string_test_support.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKRunTimeLib.h"

namespace tsruntime {
namespace {

using string_test::ExpectError;

Argument Named(const char16_t* name, Variant value) { return Argument{name, std::move(value)}; }
Argument Positional(Variant value) { return Argument{{}, std::move(value)}; }

class StringByName : public ::testing::Test {
 protected:
  Variant Call(StringView member, std::vector<Argument>& args) {
    return Invoke(*object, member, InvokeKind::kCall, args);
  }
  Ref<Object> object = CreateObject(u"TSRuntimeLib.clsZKString");
};

TEST_F(StringByName, DeclaresItsMembersWithTheirExactParameterNames) {
  struct Member {
    const char16_t* name;
    std::vector<String> params;
    std::vector<String> written_back;
  } expected[] = {
      {u"InstrRight", {u"Expression", u"SearchStr", u"SearchLen", u"CompareType"}, {}},
      {u"Replace", {u"Expression", u"SearchStr", u"ReplaceStr", u"CompareType"}, {}},
      {u"Filter", {u"Expression", u"FilteringStr", u"Iclude", u"CompareType", u"SelStart"},
       {u"SelStart"}},
      {u"GetLeft", {u"Expression", u"SepStr", u"InstrRight", u"SepInclude", u"AllIfNoMatch"}, {}},
      {u"GetRight", {u"Expression", u"SepStr", u"InstrLeft", u"SepInclude", u"AllIfNoMatch"}, {}},
      {u"Trim", {u"Expression", u"CharsTrim", u"TrimType", u"CompareType", u"SelStart"},
       {u"SelStart"}},
      {u"ChangeCase", {u"SourceString", u"CaseType", u"WordDelimiters"}, {}},
      {u"ArrayJoin", {u"DataArray"}, {}},
      {u"ArraySplit", {u"DataString"}, {}},
      {u"InWords", {u"Expression", u"IncludeUnitNames"}, {}},
      {u"ConvMKD", {u"Expression"}, {}},
      {u"ConvMKI", {u"Expression"}, {}},
      {u"ConvMKL", {u"Expression"}, {}},
      {u"ConvMKS", {u"Expression"}, {}},
      {u"ConvCVD", {u"Expression"}, {u"Expression"}},
      {u"ConvCVI", {u"Expression"}, {u"Expression"}},
      {u"ConvCVL", {u"Expression"}, {u"Expression"}},
      {u"ConvCVS", {u"Expression"}, {u"Expression"}},
      {u"ConvWin2Dos", {u"SourceString", u"DestString"}, {u"SourceString", u"DestString"}},
      {u"IsVarEQ", {u"Expression0", u"Expression1"}, {}},
      {u"StrToVarNull", {u"Expression", u"TrimLen"}, {}},
  };
  const ClassInfo& info = object->classInfo();
  EXPECT_EQ(info.members.size(), std::size(expected));
  for (const auto& e : expected) {
    const MemberInfo* m = info.find(e.name, MemberKind::kMethod);
    ASSERT_NE(m, nullptr) << ToUtf8(e.name);
    std::vector<String> names, written;
    for (const ParamInfo& p : m->params) {
      names.push_back(p.name);
      if (p.writesBack) written.push_back(p.name);
    }
    EXPECT_EQ(names, e.params) << ToUtf8(e.name);
    EXPECT_EQ(written, e.written_back) << ToUtf8(e.name);
  }
  EXPECT_EQ(info.find(u"ArraySplit", MemberKind::kMethod)->returnType,
            ArrayOf(VarType::kString));
  EXPECT_EQ(info.find(u"InWords", MemberKind::kMethod)->params[0].type, VarType::kCurrency);
}

TEST_F(StringByName, FillsInOptionalDefaults) {
  std::vector<Argument> args = {Positional(u"abcabc"), Positional(u"bc")};
  EXPECT_EQ(Call(u"InstrRight", args), Variant(int32_t{5}));
  args = {Positional(u"a-b--c"), Positional(u"-")};
  EXPECT_EQ(Call(u"Replace", args), Variant(u"abc")) << "missing ReplaceStr deletes";
  args = {Positional(1234.56)};
  EXPECT_EQ(ToUtf8(Call(u"InWords", args).asString()),
            "одна тысяча двести тридцать четыре рубля 56 копеек");
  args = {Positional(u"abcdef"), Named(u"TrimLen", Variant::Missing())};
  EXPECT_EQ(Call(u"StrToVarNull", args), Variant(u"abcdef"));
  args = {Positional(u"a.b.c"), Positional(u"."), Named(u"SepInclude", true)};
  EXPECT_EQ(Call(u"GetLeft", args), Variant(u"a."));
  args = {Positional(u"ABCabc"), Positional(u"BC"), Named(u"CompareType", int32_t{1})};
  EXPECT_EQ(Call(u"InstrRight", args), Variant(int32_t{5}));
}

TEST_F(StringByName, TakesACurrencyForInWords) {
  std::vector<Argument> args = {Positional(Currency::FromRaw(12345600)),
                                Named(u"IncludeUnitNames", false)};
  EXPECT_EQ(ToUtf8(Call(u"InWords", args).asString()), "одна тысяча двести тридцать четыре ");
  EXPECT_EQ(args[0].value, Variant(Currency::FromRaw(12345600))) << "the amount is not changed";
}

TEST_F(StringByName, WritesTheCaretBackIntoTheCallersArgument) {
  std::vector<Argument> args = {Positional(u"a-b-c"), Positional(u"-"),
                                Named(u"SelStart", int32_t{4})};
  EXPECT_EQ(Call(u"Filter", args), Variant(u"abc"));
  EXPECT_EQ(args[2].value, Variant(int32_t{2}));

  args = {Positional(u"xxabcxx"), Positional(u"x"), Positional(int32_t{xcZK_TRIM_BOTH}),
          Positional(int32_t{0}), Positional(int32_t{7})};
  EXPECT_EQ(Call(u"Trim", args), Variant(u"abc"));
  EXPECT_EQ(args[4].value, Variant(int32_t{3}));

  args = {Positional(u"a-b"), Positional(u"-")};
  EXPECT_EQ(Call(u"Filter", args), Variant(u"ab")) << "caret left out";
  EXPECT_EQ(args.size(), 2u);
}

TEST_F(StringByName, WritesConvertedTextBackIntoTheCallersArguments) {
  std::vector<Argument> args = {Positional(u"A中")};
  EXPECT_EQ(Call(u"ConvCVL", args), Variant(int32_t{0x3F41}));
  EXPECT_EQ(args[0].value, Variant(u"A?"));

  args = {Positional(u"Привет"), Positional(Variant())};
  EXPECT_EQ(Call(u"ConvWin2Dos", args), Variant(true));
  EXPECT_EQ(StringToAnsi(args[1].value.asString()),
            (std::vector<uint8_t>{0x8F, 0xE0, 0xA8, 0xA2, 0xA5}));
  EXPECT_EQ(args[0].value, Variant(u"Привет"));
}

TEST_F(StringByName, PassesErrorsWithAllTheirFields) {
  std::vector<Argument> args = {Positional(u"abc"), Positional(u"b"), Positional(int32_t{-7})};
  ExpectError([&] { Call(u"InstrRight", args); }, xcZKERR_STRING_INSTRRIGHT,
              u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -7", "InstrRight");
  args = {Positional(SafeArray(VarType::kString))};
  string_test::ExpectRuntimeError([&] { Call(u"ArrayJoin", args); },
                                  RuntimeError::kSubscriptOutOfRange, "ArrayJoin");
  args = {Positional(u"abc"), Positional(u"b"), Named(u"Include", true)};
  string_test::ExpectRuntimeError([&] { Call(u"Filter", args); },
                                  RuntimeError::kNamedArgumentNotFound,
                                  "the parameter is spelled Iclude");
}

TEST(RootObject, HandsOutANewStringObjectOnEveryRead) {
  auto root = New<clsZKRunTimeLib>();
  const Ref<clsZKString> a = root->GetObjString(), b = root->GetObjString();
  ASSERT_TRUE(a && b);
  EXPECT_NE(a.get(), b.get());

  std::vector<Argument> none;
  const Variant first = Invoke(*root, u"GetObjString", InvokeKind::kCall, none);
  const Variant second = Invoke(*root, u"GetObjString", InvokeKind::kCall, none);
  ASSERT_TRUE(first.isObject() && second.isObject());
  EXPECT_NE(first.asObject().get(), second.asObject().get());
  EXPECT_EQ(first.asObject()->classInfo().name, u"clsZKString");
}

TEST(StringEnumerations, AreRegisteredWithTheirValues) {
  const std::vector<std::pair<String, int32_t>> trim = {
      {u"xcZK_TRIM_LEFT", 1}, {u"xcZK_TRIM_RIGHT", 2}, {u"xcZK_TRIM_BOTH", 3}};
  const std::vector<std::pair<String, int32_t>> change_case = {
      {u"xcZK_CASE_FIRSTUP", 0}, {u"xcZK_CASE_ALLDOWN", 1}, {u"xcZK_CASE_ALLUP", 2}};
  const auto enums = RegisteredEnums();
  auto members = [&](StringView name) {
    auto it = std::find_if(enums.begin(), enums.end(),
                           [&](const EnumInfo* e) { return e->name == name; });
    return it == enums.end() ? std::vector<std::pair<String, int32_t>>{} : (*it)->members;
  };
  EXPECT_EQ(members(u"xeZK_TRIM_TYPE"), trim);
  EXPECT_EQ(members(u"xeZK_CHANGE_CASE"), change_case);
}

}  // namespace
}  // namespace tsruntime
