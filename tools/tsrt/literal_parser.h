// Reading arguments written in the host language's literal syntax.
//
//   ParseLiteral("\"a\"\"b\"")          -> String  a"b
//   ParseLiteral("70000")               -> Long    70000
//   ParseLiteral("1.5!")                -> Single  1.5
//   ParseLiteral("Array(1 To 2: 5, 6)") -> Variant array with bounds 1 to 2
//   ParseLiteral("&H8000")              -> Integer -32768 (&H8000& is the Long 32768)
//   ParseLiteral("HKEY_CURRENT_USER")   -> Long -2147483647, a public enumeration's member
//   ParseArgument("Step:=2")            -> the named argument Step, Integer 2
//
// The full grammar is in docs/tsrt.md and `tsrt --help`. Numbers always use '.' as the
// decimal point, whatever the locale. Text that is not a literal raises `LiteralError`
// with a message naming the fault and its column; nothing else escapes.
#pragma once

#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

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

// For readers of longer lines (the interactive session): reads one literal in `text`
// from `at` on and leaves `at` just past it, whatever follows. An '&' not followed by a
// text piece ends a text literal there.
tsruntime::Variant ParseLiteralAt(tsruntime::StringView text, size_t& at);

// Whether a word begins a literal: a keyword (True, Nothing, vbCrLf, Array, CLng, ...)
// or a member of a public enumeration. (`Enumeration.Member` is a literal too, though
// the enumeration's name alone is not.)
bool IsLiteralWord(tsruntime::StringView word);
// Every word that begins a literal, in the spelling that lists show.
std::vector<tsruntime::String> LiteralWords();
// The type a conversion's name converts to (CBool, CByte, CInt, CLng, CSng, CDbl, CCur,
// CDec, CDate); nothing for another word.
std::optional<tsruntime::VarType> ConversionNamed(tsruntime::StringView word);

}  // namespace tsrt
