// The registered classes and enumerations as a type-library viewer shows them.
//
//   Class clsZKRunTimeLib  ' TSRuntimeLib.clsZKRunTimeLib
//     ' The library's root object: ...
//     Function Init() As Boolean
//       ' Readies the library for use; always returns True.
//     Property Let Language(ByVal RHS As Long)
//       ' The interface language of this thread: ...
//   End Class
//
// Every parameter says `ByRef` when the member writes it back to the caller and
// `ByVal` otherwise; an optional one stands in brackets with its default as a literal.
// A help string follows what it describes as a comment line, indented one step more.
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

// The class block: members in their registered order, then events, each followed by
// its help string.
std::string DescribeClass(const tsruntime::ClassInfo& info);

// "Enum Name", one "Member = value" line each, "End Enum", with the help strings.
std::string DescribeEnum(const tsruntime::EnumInfo& info);

}  // namespace tsrt
