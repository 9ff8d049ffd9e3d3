// The registered classes and enumerations as a type-library viewer shows them.
//
//   Class clsZKRunTimeLib  ' TSRuntimeLib.clsZKRunTimeLib
//     Function Init() As Boolean
//     Property Let Language(ByVal RHS As Long)
//     Property Get Language() As Long
//   End Class
//
// Every parameter says `ByRef` when the member writes it back to the caller and
// `ByVal` otherwise; an optional one stands in brackets with its default as a literal.
#pragma once

#include <string>
#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsrt {

// One line per class: its name, its ProgID, and "(not creatable)" for classes that
// hosts receive but cannot create.
std::string ListClasses(const std::vector<const tsruntime::ClassInfo*>& classes);

// One member's declaration, e.g.
// "Function Find(ByVal Text As String, [ByVal Start As Long = 1]) As Long".
std::string DeclareMember(const tsruntime::MemberInfo& member);

// A member's line in the class block, without its indent: the declaration, then
// "' default member" or "' the enumerator For Each uses" where they apply. Everything a
// listing shows about one member is put together here.
std::string DescribeMember(const tsruntime::ClassInfo& info, const tsruntime::MemberInfo& member);

// The class block: members in their registered order, then events.
std::string DescribeClass(const tsruntime::ClassInfo& info);

// "Enum Name", one "Member = value" line each, "End Enum".
std::string DescribeEnum(const tsruntime::EnumInfo& info);

}  // namespace tsrt
