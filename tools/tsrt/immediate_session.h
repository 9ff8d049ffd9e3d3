// The interactive session behind `tsrt` with no command: lines in the host language's
// syntax (immediate_syntax.h) run one after another, as in a development environment's
// Immediate window. Variables, the last error and `On Error Resume Next` live from one
// line to the next.
//
//   ImmediateSession s;
//   s.RunLine("Set t = CreateObject(\"TSRuntimeLib.clsZKString\")", out, err);
//   s.RunLine("? t.Filter(\"a-b-c\", \"-\", SelStart:=4)", out, err);
//   // out: "\"abc\"\nSelStart = 3\n"
//
// Values print as `tsrt call` prints them (literal_printer.h), each call's written-back
// arguments after the statement's own output. A failed statement prints its error as
// `tsrt call` does, "Error NUMBER (SOURCE): DESCRIPTION", and the rest of the line is
// skipped; a line that cannot be read, or names what does not exist, prints "tsrt: "
// and what is wrong. A mistyped name adds "did you mean ...?" from the type information.
#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "immediate_syntax.h"

namespace tsrt {

class ImmediateSession {
 public:
  ImmediateSession();

  // Runs one line. `line_number`, when given, leads messages about the text ("line 3: ").
  // False when a statement failed with `On Error Resume Next` not in force, or the line
  // could not be read.
  bool RunLine(std::string_view line, std::ostream& out, std::ostream& err,
               std::optional<size_t> line_number = std::nullopt);

  // Set by `Exit` or `Quit`.
  bool quitting() const { return quitting_; }

  struct Variable {
    tsruntime::String name;  // as first assigned
    tsruntime::Variant value;
  };
  // The session's variables, keyed by their name folded to lower case.
  const std::map<tsruntime::String, Variable>& variables() const { return variables_; }
  // The variable of that name, in any case, or null.
  const Variable* FindVariable(tsruntime::StringView name) const;

  // The functions a line may call besides members: CreateObject, TypeName and the
  // conversions.
  static std::vector<tsruntime::String> FunctionNames();

 private:
  struct Value {
    tsruntime::Variant v;
    tsruntime::VarType declared = tsruntime::VarType::kVariant;
  };

  void Run(const immediate::Statement& st, std::ostream& out);
  void Print(const immediate::Statement& st, std::ostream& out);
  std::optional<std::string> Describe(const immediate::Expr& e) const;
  void Assign(const immediate::Statement& st);
  Value Evaluate(const immediate::Expr& e);
  Value EvaluateName(const immediate::Expr& e);
  Value EvaluateMember(const immediate::Expr& e);
  Value Function(const immediate::Expr& e);
  Value Invoke(const tsruntime::Ref<tsruntime::Object>& object, tsruntime::StringView member,
               tsruntime::InvokeKind kind, const std::vector<immediate::ArgExpr>& args,
               const immediate::Expr* assigned);
  tsruntime::Ref<tsruntime::Object> ObjectOf(const immediate::Expr& e);
  tsruntime::Ref<tsruntime::Object> Create(tsruntime::StringView name);
  Variable* Find(tsruntime::StringView name) {
    return const_cast<Variable*>(FindVariable(name));
  }
  [[noreturn]] void UnknownName(const immediate::Expr& e) const;

  std::map<tsruntime::String, Variable> variables_;
  tsruntime::Error last_error_;
  bool resume_next_ = false;
  bool quitting_ = false;
  std::string written_back_;  // the running statement's "Name = literal" lines
  std::string hint_;          // "did you mean ...?" for the running statement's error
};

}  // namespace tsrt
