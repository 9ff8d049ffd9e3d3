#include "type_listing.h"

#include <algorithm>

#include "literal_printer.h"

namespace tsrt {
namespace {

using tsruntime::MemberKind;
using tsruntime::ParamInfo;
using tsruntime::ToUtf8;
using tsruntime::VarType;

bool IsArrayType(VarType t) { return (static_cast<uint16_t>(t) & 0x2000) != 0; }
VarType ElementOf(VarType t) {
  return static_cast<VarType>(static_cast<uint16_t>(t) & ~uint16_t{0x2000});
}

// "ByRef Items() As String", "[ByVal Start As Long = 1]".
std::string DeclareParam(const ParamInfo& p) {
  std::string s = p.writesBack ? "ByRef " : "ByVal ";
  s += ToUtf8(p.name);
  if (IsArrayType(p.type)) {
    s += "() As " + ToUtf8(tsruntime::TypeName(ElementOf(p.type)));
  } else {
    s += " As " + ToUtf8(tsruntime::TypeName(p.type));
  }
  if (!p.optional) return s;
  if (!p.defaultValue.isMissing()) s += " = " + PrintLiteral(p.defaultValue, p.type);
  return "[" + s + "]";
}

std::string DeclareParams(const std::vector<ParamInfo>& params) {
  std::string s = "(";
  for (size_t i = 0; i < params.size(); ++i) {
    if (i) s += ", ";
    s += DeclareParam(params[i]);
  }
  return s + ")";
}

const char* KindWord(const tsruntime::MemberInfo& m) {
  switch (m.kind) {
    case MemberKind::kMethod:
      return m.returnType == VarType::kEmpty ? "Sub" : "Function";
    case MemberKind::kPropertyGet:
      return "Property Get";
    case MemberKind::kPropertyLet:
      return "Property Let";
    case MemberKind::kPropertySet:
      return "Property Set";
  }
  return "Function";
}

// The help string as a comment line under what it describes, two columns further in.
std::string HelpLine(const tsruntime::String& help, const char* indent) {
  if (help.empty()) return {};
  return std::string(indent) + "' " + ToUtf8(help) + '\n';
}

}  // namespace

std::string ListClasses(const std::vector<const tsruntime::ClassInfo*>& classes) {
  size_t width = 0;
  for (const auto* c : classes) width = std::max(width, ToUtf8(c->name).size());
  std::string out;
  for (const auto* c : classes) {
    std::string name = ToUtf8(c->name);
    name.resize(width, ' ');
    out += name + "  " + ToUtf8(c->progId());
    if (!c->creatable) out += "  (not creatable)";
    out += '\n';
  }
  return out;
}

std::string DeclareMember(const tsruntime::MemberInfo& m) {
  std::string s = std::string(KindWord(m)) + " " + ToUtf8(m.name) + DeclareParams(m.params);
  if (m.returnClass) {
    s += " As " + ToUtf8(m.returnClass().name);
  } else if (m.returnType != VarType::kEmpty) {
    s += " As " + ToUtf8(tsruntime::TypeName(m.returnType));
  }
  return s;
}

std::string DescribeMember(const tsruntime::ClassInfo& info, const tsruntime::MemberInfo& m) {
  std::string out = DeclareMember(m);
  if (!info.defaultMember.empty() && tsruntime::EqualsAsciiNoCase(m.name, info.defaultMember)) {
    out += "  ' default member";
  }
  if (m.kind == MemberKind::kMethod && tsruntime::EqualsAsciiNoCase(m.name, u"NewEnum")) {
    out += "  ' the enumerator For Each uses";
  }
  return out;
}

std::string DescribeClass(const tsruntime::ClassInfo& info) {
  std::string out = "Class " + ToUtf8(info.name) + "  ' " + ToUtf8(info.progId());
  if (!info.creatable) out += ", not creatable";
  if (info.enumerable()) out += ", enumerable with For Each";
  out += '\n' + HelpLine(info.help, "  ");
  for (const tsruntime::MemberInfo& m : info.members) {
    out += "  " + DescribeMember(info, m) + '\n' + HelpLine(m.help, "    ");
  }
  for (const tsruntime::EventInfo& e : info.events) {
    out += "  Event " + ToUtf8(e.name) + DeclareParams(e.params) + '\n' + HelpLine(e.help, "    ");
  }
  return out + "End Class\n";
}

std::string DescribeEnum(const tsruntime::EnumInfo& info) {
  std::string out = "Enum " + ToUtf8(info.name) + '\n' + HelpLine(info.help, "  ");
  for (const tsruntime::EnumMember& m : info.members) {
    out += "  " + ToUtf8(m.name) + " = " + std::to_string(m.value) + '\n';
    out += HelpLine(m.help, "    ");
  }
  return out + "End Enum\n";
}

}  // namespace tsrt
