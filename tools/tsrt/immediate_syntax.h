// Reading a line typed into the interactive session: statements in the host language's
// syntax, separated by ':'.
//
//   Set s = CreateObject("TSRuntimeLib.clsZKString")
//   x = s.Filter("a-b-c", "-", SelStart:=4)
//   ? s.InWords(1234.56@), x & "!"
//   d.Data("k") = HKEY_CURRENT_USER : On Error Resume Next
//
// Literals are read by the literal reader (literal_parser.h); this file adds names,
// member calls, `&`, comparisons and the statements. A line that is not a statement
// raises `LiteralError` with a message that names the fault and its column.
#pragma once

#include <memory>
#include <vector>

#include "literal_parser.h"

namespace tsrt::immediate {

struct Expr;
using ExprPtr = std::shared_ptr<const Expr>;

struct ArgExpr {
  tsruntime::String name;  // empty for a positional argument
  ExprPtr value;           // null for one left out ("f(1, , 3)")
};

struct Expr {
  enum class Kind {
    kLiteral,  // `literal`
    kName,     // a variable, Err, a class or enumeration, or a function called with `args`
    kMember,   // `object.name`, called with `args` when there are any
    kNew,      // `New name`
    kBinary,   // `left op right`: "&", "=", "<>", "<", ">", "<=", ">=", "Is"
    kParen,    // `(object)`: a value, never the variable itself
  };
  Kind kind = Kind::kLiteral;
  size_t column = 0;  // 1-based, of the name or operator
  tsruntime::Variant literal;
  tsruntime::String name;  // name, member, class name, or the operator
  ExprPtr object;          // kMember: the object; kBinary: the left side; kParen: inside
  ExprPtr right;
  bool called = false;  // an argument list was written, perhaps empty: "f()"
  std::vector<ArgExpr> args;
};

struct Statement {
  enum class Kind {
    kPrint,           // `? a, b` or `Print a; b`
    kAssign,          // `target = value` (`Let` optional)
    kSet,             // `Set target = value`
    kCall,            // `obj.Member args`, `Call obj.Member(args)`
    kResumeNext,      // `On Error Resume Next`
    kStopResuming,    // `On Error GoTo 0`
    kClearError,      // `Err.Clear`
    kQuit,            // `Exit` or `Quit`
  };
  Kind kind = Kind::kPrint;
  std::vector<ExprPtr> items;  // kPrint
  std::vector<char> separators;  // kPrint: ',' or ';' after each item but the last
  ExprPtr target;  // kAssign, kSet: a name or a member; kCall: the member called
  ExprPtr value;
};

// The statements of one line, in order; none for a blank line or a comment ("' ...").
std::vector<Statement> ParseLine(tsruntime::StringView line);

}  // namespace tsrt::immediate
