// Reading arguments written in the host language's literal syntax.
//
//   ParseLiteral("\"a\"\"b\"")          -> String  a"b
//   ParseLiteral("70000")               -> Long    70000
//   ParseLiteral("1.5!")                -> Single  1.5
//   ParseLiteral("Array(1 To 2: 5, 6)") -> Variant array with bounds 1 to 2
//   ParseArgument("Step:=2")            -> the named argument Step, Integer 2
//
// The full grammar is in docs/tsrt.md and `tsrt --help`. Numbers always use '.' as the
// decimal point, whatever the locale. Text that is not a literal raises `LiteralError`
// with a message naming the fault and its column; nothing else escapes.
#pragma once

#include <stdexcept>
#include <string_view>

#include "tsruntime/automation/dispatch.h"

namespace tsrt {

class LiteralError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads `text` (UTF-8), which must hold one literal and nothing else.
tsruntime::Variant ParseLiteral(std::string_view text);

// Reads one command-line argument: a literal, `Name:=literal` for a named argument,
// or an empty word, which leaves a positional argument out as `Missing` does.
tsruntime::Argument ParseArgument(std::string_view text);

}  // namespace tsrt
