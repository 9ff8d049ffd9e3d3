// The type information as `tsrt classes`, `members` and `enums` print it.
#include "type_listing.h"

#include <gtest/gtest.h>

namespace tsrt {
namespace {

using tsruntime::ClassInfo;
using tsruntime::MemberInfo;
using tsruntime::MemberKind;
using tsruntime::ParamInfo;
using tsruntime::String;
using tsruntime::Variant;
using tsruntime::VarType;

ParamInfo In(const char16_t* name, VarType type) { return ParamInfo{name, type}; }
ParamInfo Out(const char16_t* name, VarType type) {
  ParamInfo p{name, type};
  p.writesBack = true;
  return p;
}
ParamInfo Opt(ParamInfo p, Variant default_value = Variant::Missing()) {
  p.optional = true;
  p.defaultValue = std::move(default_value);
  return p;
}
MemberInfo Member(const char16_t* name, MemberKind kind, std::vector<ParamInfo> params,
                  VarType returns) {
  MemberInfo m;
  m.name = name;
  m.kind = kind;
  m.params = std::move(params);
  m.returnType = returns;
  return m;
}

TEST(TypeListing, MembersReadAsDeclarations) {
  struct Case {
    MemberInfo member;
    const char* expected;
  };
  const VarType kLong = VarType::kLong, kString = VarType::kString;
  const Case cases[] = {
      {Member(u"Clear", MemberKind::kMethod, {}, VarType::kEmpty), "Sub Clear()"},
      {Member(u"Init", MemberKind::kMethod, {}, VarType::kBoolean), "Function Init() As Boolean"},
      {Member(u"InstrRight", MemberKind::kMethod,
              {In(u"Expression", kString), In(u"SearchStr", kString),
               Opt(In(u"SearchLen", kLong), Variant(int32_t{-1})),
               Opt(In(u"CompareType", kLong), Variant(int32_t{0}))},
              kLong),
       "Function InstrRight(ByVal Expression As String, ByVal SearchStr As String, "
       "[ByVal SearchLen As Long = -1], [ByVal CompareType As Long = 0]) As Long"},
      {Member(u"Split", MemberKind::kMethod,
              {In(u"Text", kString), Out(u"Items", tsruntime::ArrayOf(kString)),
               Opt(In(u"Delimiter", kString), Variant(String(u"\t")))},
              VarType::kEmpty),
       "Sub Split(ByVal Text As String, ByRef Items() As String, "
       "[ByVal Delimiter As String = vbTab])"},
      {Member(u"Find", MemberKind::kMethod,
              {Out(u"Key", VarType::kVariant), Opt(Out(u"Position", kLong))}, VarType::kBoolean),
       "Function Find(ByRef Key As Variant, [ByRef Position As Long]) As Boolean"},
      {Member(u"Rate", MemberKind::kMethod, {Opt(In(u"Factor", VarType::kDouble), Variant(2.0))},
              VarType::kCurrency),
       "Function Rate([ByVal Factor As Double = 2]) As Currency"},
      {Member(u"Keys", MemberKind::kMethod, {}, tsruntime::ArrayOf(kString)),
       "Function Keys() As String()"},
      {Member(u"Language", MemberKind::kPropertyGet, {}, kLong), "Property Get Language() As Long"},
      {Member(u"Language", MemberKind::kPropertyLet, {In(u"RHS", kLong)}, VarType::kEmpty),
       "Property Let Language(ByVal RHS As Long)"},
      {Member(u"Owner", MemberKind::kPropertySet, {In(u"RHS", VarType::kObject)}, VarType::kEmpty),
       "Property Set Owner(ByVal RHS As Object)"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DeclareMember(c.member), c.expected) << tsruntime::ToUtf8(c.member.name);
  }
}

TEST(TypeListing, ClassBlockMarksDefaultMemberEnumerationEventsAndCreatability) {
  ClassInfo info;
  info.name = u"clsProbe";
  info.creatable = false;
  info.defaultMember = u"item";
  info.members = {
      Member(u"Item", MemberKind::kPropertyGet, {In(u"Key", VarType::kVariant)}, VarType::kVariant),
      Member(u"Item", MemberKind::kPropertyLet,
             {In(u"Key", VarType::kVariant), In(u"RHS", VarType::kVariant)}, VarType::kEmpty),
      Member(u"NewEnum", MemberKind::kMethod, {}, VarType::kObject),
      Member(u"Count", MemberKind::kPropertyGet, {}, VarType::kLong),
  };
  info.events = {{u"OnChanged", {In(u"ChangedItem", VarType::kVariant)}}};
  EXPECT_EQ(DescribeClass(info),
            "Class clsProbe  ' TSRuntimeLib.clsProbe, not creatable, enumerable with For Each\n"
            "  Property Get Item(ByVal Key As Variant) As Variant  ' default member\n"
            "  Property Let Item(ByVal Key As Variant, ByVal RHS As Variant)  ' default member\n"
            "  Function NewEnum() As Object  ' the enumerator For Each uses\n"
            "  Property Get Count() As Long\n"
            "  Event OnChanged(ByVal ChangedItem As Variant)\n"
            "End Class\n");

  info.creatable = true;
  info.defaultMember.clear();
  info.members.resize(1);
  info.events.clear();
  EXPECT_EQ(DescribeClass(info),
            "Class clsProbe  ' TSRuntimeLib.clsProbe\n"
            "  Property Get Item(ByVal Key As Variant) As Variant\n"
            "End Class\n");
}

TEST(TypeListing, ClassesAlignTheirProgIdsAndMarkThoseHostsCannotCreate) {
  ClassInfo a, b;
  a.name = u"clsZKString";
  b.name = u"Enumerator";
  b.creatable = false;
  EXPECT_EQ(ListClasses({&b, &a}),
            "Enumerator   TSRuntimeLib.Enumerator  (not creatable)\n"
            "clsZKString  TSRuntimeLib.clsZKString\n");
  EXPECT_EQ(ListClasses({}), "");
}

TEST(TypeListing, EnumerationsListEachMemberWithItsValue) {
  const tsruntime::EnumInfo e{u"xeZK_TRIM_TYPE",
                              {{u"xcZK_TRIM_LEFT", 1}, {u"xcZK_TRIM_ALL", -2147220804}}};
  EXPECT_EQ(DescribeEnum(e),
            "Enum xeZK_TRIM_TYPE\n"
            "  xcZK_TRIM_LEFT = 1\n"
            "  xcZK_TRIM_ALL = -2147220804\n"
            "End Enum\n");
}

}  // namespace
}  // namespace tsrt
