// Tab completion for the interactive session: what may stand where the cursor is.
//
//   "Set s = CreateObject(\"TSRuntimeLib.clsZKStr"  ->  clsZKString, clsZKStringConcat
//   "? s.InW"                                      ->  InWords (s holding a clsZKString)
//   "? s.Filter(\"a-b\", \"-\", Sel"               ->  SelStart:=
//   "r.GetKeyValue HKEY_CU"                        ->  HKEY_CURRENT_USER
//
// Names come from the type information and the session's variables: after "obj." the
// members of obj's class (a variable's, or what a member declares it returns), after
// "Enumeration." its members, in an argument list the member's parameters as
// "Name:=", inside CreateObject("...") the creatable classes, elsewhere the variables,
// functions, literal keywords, enumeration members and class names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "immediate_session.h"

namespace tsrt {

struct Completion {
  size_t start = 0;  // where the word being completed begins, in bytes
  std::vector<std::string> candidates;  // sorted; each replaces the word
};

// The candidates for the word that ends `line_before_cursor` (UTF-8), matched in any case.
Completion Complete(const ImmediateSession& session, std::string_view line_before_cursor);

}  // namespace tsrt
