#include "immediate_session.h"

#include <sstream>

#include "literal_printer.h"
#include "nearest_name.h"
#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/err_object.h"
#include "type_listing.h"
#include "written_back.h"

namespace tsrt {
namespace {

using immediate::ArgExpr;
using immediate::Expr;
using immediate::Statement;
using tsruntime::Argument;
using tsruntime::ClassInfo;
using tsruntime::Error;
using tsruntime::InvokeKind;
using tsruntime::Object;
using tsruntime::Ref;
using tsruntime::RuntimeError;
using tsruntime::String;
using tsruntime::StringView;
using tsruntime::ToUtf8;
using tsruntime::Variant;
using tsruntime::VarType;

constexpr StringView kProgIdPrefix = u"TSRuntimeLib.";

bool Is(StringView a, StringView b) { return tsruntime::EqualsAsciiNoCase(a, b); }

String Folded(StringView name) {
  String s(name);
  for (char16_t& c : s) {
    if (c >= u'A' && c <= u'Z') c += 32;
  }
  return s;
}

const tsruntime::EnumInfo* EnumNamed(StringView name) {
  for (const tsruntime::EnumInfo* e : tsruntime::RegisteredEnums()) {
    if (Is(e->name, name)) return e;
  }
  return nullptr;
}

std::string Hint(const NearestName& near) {
  const auto best = near.Best();
  return best ? "did you mean " + *best + "?" : "";
}

[[noreturn]] void Fault(const std::string& what, const Expr& at, const std::string& hint = "") {
  throw LiteralError(what + " at column " + std::to_string(at.column) +
                     (hint.empty() ? "" : "; " + hint));
}

// The object a value holds: 424 for another value, 91 for Nothing.
Ref<Object> ObjectIn(const Variant& v) {
  if (!v.isObject()) tsruntime::RaiseRuntime(RuntimeError::kObjectRequired);
  if (!v.asObject()) tsruntime::RaiseRuntime(RuntimeError::kObjectNotSet);
  return v.asObject();
}

const Expr* Bare(const Expr& e) {
  return e.kind == Expr::Kind::kName && !e.called ? &e : nullptr;
}

}  // namespace

ImmediateSession::ImmediateSession() : last_error_(0, {}, {}) {}

std::vector<String> ImmediateSession::FunctionNames() { return {u"CreateObject", u"TypeName"}; }

bool ImmediateSession::RunLine(std::string_view line, std::ostream& out, std::ostream& err,
                               std::optional<size_t> line_number) {
  const std::string where = line_number ? "line " + std::to_string(*line_number) + ": " : "";
  auto refuse = [&](const LiteralError& e) {
    out.flush();
    err << "tsrt: " << where << e.what() << '\n';
    err.flush();
    return false;
  };
  std::vector<Statement> statements;
  try {
    statements = immediate::ParseLine(tsruntime::FromUtf8(line));
  } catch (const LiteralError& e) {
    return refuse(e);
  }
  for (const Statement& st : statements) {
    written_back_.clear();
    hint_.clear();
    std::ostringstream printed;  // shown only when the whole statement succeeds
    try {
      Run(st, printed);
    } catch (const Error& e) {
      last_error_ = e;
      if (resume_next_) continue;
      out.flush();
      err << e.what() << '\n';
      if (!hint_.empty()) err << hint_ << '\n';
      err.flush();
      return false;
    } catch (const LiteralError& e) {
      return refuse(e);
    }
    out << printed.str() << written_back_;
    if (quitting_) break;
  }
  out.flush();
  return true;
}

void ImmediateSession::Run(const Statement& st, std::ostream& out) {
  switch (st.kind) {
    case Statement::Kind::kPrint:
      Print(st, out);
      break;
    case Statement::Kind::kAssign:
    case Statement::Kind::kSet:
      Assign(st);
      break;
    case Statement::Kind::kCall:
      Evaluate(*st.target);
      break;
    case Statement::Kind::kResumeNext:
    case Statement::Kind::kStopResuming:
      resume_next_ = st.kind == Statement::Kind::kResumeNext;
      last_error_ = Error(0, {}, {});
      break;
    case Statement::Kind::kClearError:
      last_error_ = Error(0, {}, {});
      break;
    case Statement::Kind::kQuit:
      quitting_ = true;
      break;
  }
}

void ImmediateSession::Print(const Statement& st, std::ostream& out) {
  if (st.items.size() == 1) {
    if (auto declaration = Describe(*st.items[0])) {
      out << *declaration;
      return;
    }
  }
  std::string line;
  for (size_t i = 0; i < st.items.size(); ++i) {
    if (i > 0) line += st.separators[i - 1] == ',' ? '\t' : ' ';
    const Value v = Evaluate(*st.items[i]);
    line += PrintLiteral(v.v, v.declared);
  }
  out << line << '\n';
}

// `? Class`, `? TSRuntimeLib.Class`, `? Class.Member` and `? Enumeration` print the
// declarations that `tsrt members` and `tsrt enums` list. A variable of that name wins.
std::optional<std::string> ImmediateSession::Describe(const Expr& e) const {
  auto type_name = [&](const Expr& x) -> const Expr* {
    const Expr* n = Bare(x);
    return n && !Is(n->name, u"Err") && !FindVariable(n->name) ? n : nullptr;
  };
  const ClassInfo* info = nullptr;
  const Expr* member = nullptr;
  if (const Expr* n = type_name(e)) {
    if ((info = tsruntime::FindClass(n->name))) return DescribeClass(*info);
    if (const tsruntime::EnumInfo* en = EnumNamed(n->name)) return DescribeEnum(*en);
    return std::nullopt;
  }
  if (e.kind != Expr::Kind::kMember || e.called) return std::nullopt;
  const Expr& o = *e.object;
  if (const Expr* n = type_name(o)) {
    if (Is(n->name, u"TSRuntimeLib")) {
      if ((info = tsruntime::FindClass(e.name))) return DescribeClass(*info);
      return std::nullopt;
    }
    info = tsruntime::FindClass(n->name);
    member = &e;
  } else if (o.kind == Expr::Kind::kMember && !o.called && type_name(*o.object) &&
             Is(o.object->name, u"TSRuntimeLib")) {
    info = tsruntime::FindClass(o.name);
    member = &e;
  }
  if (!info) return std::nullopt;
  std::string lines;
  NearestName near(member->name);
  for (const tsruntime::MemberInfo& m : info->members) {
    if (Is(m.name, member->name)) lines += DescribeMember(*info, m) + '\n';
    near.Consider(m.name);
  }
  if (lines.empty()) {
    Fault(ToUtf8(info->name) + " has no member " + ToUtf8(member->name), *member, Hint(near));
  }
  return lines;
}

void ImmediateSession::Assign(const Statement& st) {
  const Expr& t = *st.target;
  const bool set = st.kind == Statement::Kind::kSet;
  const InvokeKind kind = set ? InvokeKind::kSet : InvokeKind::kLet;
  if (Bare(t)) {
    if (Is(t.name, u"Err")) Fault("Err cannot be assigned", t);
    Variant v = Evaluate(*st.value).v;
    if (set && !v.isObject()) tsruntime::RaiseRuntime(RuntimeError::kObjectRequired);
    // A Let takes what an object stands for, its default member.
    if (!set) v = tsruntime::DefaultValue(v);
    Variable& var = variables_[Folded(t.name)];
    if (var.name.empty()) var.name = t.name;
    var.value = std::move(v);
    return;
  }
  if (t.kind == Expr::Kind::kName) {  // x(i) = v: an array's element, an object's default
    Variable* var = Find(t.name);
    if (!var) UnknownName(t);
    if (var->value.isArray()) {
      std::vector<int32_t> at;
      for (const ArgExpr& a : t.args) {
        if (!a.value) tsruntime::RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
        at.push_back(tsruntime::ToLong(Evaluate(*a.value).v));
      }
      const Variant v = tsruntime::DefaultValue(Evaluate(*st.value).v);
      tsruntime::SafeArray& array = var->value.asArray();
      if (at.size() == 1) array.set(at[0], v);
      else if (at.size() == 2) array.set(at[0], at[1], v);
      else tsruntime::RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
      return;
    }
    const Ref<Object> object = ObjectIn(var->value);
    const String& default_member = object->classInfo().defaultMember;
    if (default_member.empty()) tsruntime::RaiseRuntime(RuntimeError::kNotSupported);
    Invoke(object, default_member, kind, t.args, st.value.get());
    return;
  }
  Invoke(ObjectOf(*t.object), t.name, kind, t.args, st.value.get());
}

ImmediateSession::Value ImmediateSession::Evaluate(const Expr& e) {
  switch (e.kind) {
    case Expr::Kind::kLiteral:
      return {e.literal};
    case Expr::Kind::kParen:
      return Evaluate(*e.object);
    case Expr::Kind::kNew:
      return {Variant(Create(e.name)), VarType::kObject};
    case Expr::Kind::kName:
      return EvaluateName(e);
    case Expr::Kind::kMember:
      return EvaluateMember(e);
    case Expr::Kind::kBinary:
      break;
  }
  const Variant l = Evaluate(*e.object).v, r = Evaluate(*e.right).v;
  if (e.name == u"&") return {tsruntime::Concatenate(l, r)};
  if (Is(e.name, u"Is")) {
    if (!l.isObject() || !r.isObject()) tsruntime::RaiseRuntime(RuntimeError::kObjectRequired);
    return {Variant(l.asObject() == r.asObject())};
  }
  const Variant a = tsruntime::DefaultValue(l), b = tsruntime::DefaultValue(r);
  if (a.isNull() || b.isNull()) return {Variant::Null()};
  const int c = tsruntime::CompareVariants(a, b);
  const StringView op = e.name;
  const bool result = op == u"=" ? c == 0 : op == u"<>" ? c != 0 : op == u"<" ? c < 0
                    : op == u">" ? c > 0 : op == u"<=" ? c <= 0 : c >= 0;
  return {Variant(result)};
}

ImmediateSession::Value ImmediateSession::EvaluateName(const Expr& e) {
  if (Variable* var = Find(e.name)) {
    if (!e.called) return {var->value};
    if (var->value.isArray()) {
      std::vector<int32_t> at;
      for (const ArgExpr& a : e.args) {
        if (!a.value) tsruntime::RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
        at.push_back(tsruntime::ToLong(Evaluate(*a.value).v));
      }
      const tsruntime::SafeArray& array = var->value.asArray();
      if (at.size() == 1) return {array.get(at[0])};
      if (at.size() == 2) return {array.get(at[0], at[1])};
      tsruntime::RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    }
    const Ref<Object> object = ObjectIn(var->value);
    const String& default_member = object->classInfo().defaultMember;
    if (default_member.empty()) tsruntime::RaiseRuntime(RuntimeError::kNotSupported);
    return Invoke(object, default_member, InvokeKind::kCall, e.args, nullptr);
  }
  if (Is(e.name, u"Err") && !e.called) {
    return {Variant(tsruntime::New<tsruntime::ErrObject>(last_error_)), VarType::kObject};
  }
  if (e.called) return Function(e);
  UnknownName(e);
}

ImmediateSession::Value ImmediateSession::Function(const Expr& e) {
  const bool create = Is(e.name, u"CreateObject"), type_name = Is(e.name, u"TypeName");
  const auto conversion = ConversionNamed(e.name);
  if (!create && !type_name && !conversion) UnknownName(e);
  if (e.args.size() != 1 || !e.args[0].name.empty()) {
    tsruntime::RaiseRuntime(RuntimeError::kWrongArgumentCount);
  }
  if (!e.args[0].value) tsruntime::RaiseRuntime(RuntimeError::kArgumentNotOptional);
  const Variant v = Evaluate(*e.args[0].value).v;
  if (create) return {Variant(Create(tsruntime::ToString(v))), VarType::kObject};
  if (conversion) return {tsruntime::ChangeType(v, *conversion)};
  if (v.isObject()) return {Variant(v.asObject() ? v.asObject()->classInfo().name : u"Nothing")};
  return {Variant(tsruntime::TypeName(v.type()))};
}

ImmediateSession::Value ImmediateSession::EvaluateMember(const Expr& e) {
  const Expr& o = *e.object;
  if (Bare(o) && !Find(o.name)) {
    if (const tsruntime::EnumInfo* en = EnumNamed(o.name)) {
      NearestName near(e.name);
      for (const tsruntime::EnumMember& m : en->members) {
        if (Is(m.name, e.name)) return {Variant(m.value)};
        near.Consider(m.name);
      }
      Fault(ToUtf8(en->name) + " has no member " + ToUtf8(e.name), e, Hint(near));
    }
  }
  return Invoke(ObjectOf(o), e.name, InvokeKind::kCall, e.args, nullptr);
}

ImmediateSession::Value ImmediateSession::Invoke(const Ref<Object>& object, StringView member,
                                                 InvokeKind kind,
                                                 const std::vector<ArgExpr>& args,
                                                 const Expr* assigned) {
  std::vector<Argument> actual;
  std::vector<std::pair<size_t, String>> variables;  // arguments that are variables
  for (const ArgExpr& a : args) {
    Argument arg{a.name, Variant::Missing()};
    if (a.value) {
      if (const Expr* n = Bare(*a.value); n && Find(n->name)) {
        variables.emplace_back(actual.size(), Folded(n->name));
      }
      arg.value = Evaluate(*a.value).v;
    }
    actual.push_back(std::move(arg));
  }
  if (assigned) actual.push_back({String(), Evaluate(*assigned).v});
  const ClassInfo& info = object->classInfo();
  tsruntime::Invocation done;
  try {
    done = tsruntime::InvokeMember(*object, member, kind, actual);
  } catch (const Error& error) {
    const tsruntime::MemberInfo* m = tsruntime::ResolveMember(info, member, kind, actual);
    if (error.number() == static_cast<int32_t>(RuntimeError::kNotSupported) && !m) {
      NearestName near(member);
      for (const tsruntime::MemberInfo& candidate : info.members) near.Consider(candidate.name);
      hint_ = Hint(near);
    } else if (error.number() == static_cast<int32_t>(RuntimeError::kNamedArgumentNotFound) && m) {
      for (const Argument& a : actual) {
        NearestName near(a.name);
        bool known = a.name.empty();
        for (const tsruntime::ParamInfo& p : m->params) {
          known = known || Is(p.name, a.name);
          near.Consider(p.name);
        }
        if (!known) {
          hint_ = Hint(near);
          break;
        }
      }
    }
    throw;
  }
  written_back_ += WrittenBackLines(done);
  // A variable passed where the member writes back takes what it wrote, as by reference.
  for (const auto& [index, key] : variables) {
    for (size_t k = 0; k < done.origin.size(); ++k) {
      if (done.origin[k] == static_cast<int>(index) && done.member->params[k].writesBack) {
        variables_[key].value = actual[index].value;
      }
    }
  }
  return {done.result, done.member->returnType};
}

Ref<Object> ImmediateSession::ObjectOf(const Expr& e) { return ObjectIn(Evaluate(e).v); }

Ref<Object> ImmediateSession::Create(StringView name) {
  try {
    return tsruntime::CreateObject(name);
  } catch (const Error&) {
    const bool prefixed = name.size() > kProgIdPrefix.size() &&
                          Is(name.substr(0, kProgIdPrefix.size()), kProgIdPrefix);
    NearestName near(prefixed ? name.substr(kProgIdPrefix.size()) : name);
    for (const ClassInfo* c : tsruntime::RegisteredClasses()) {
      if (c->creatable) near.Consider(c->name);
    }
    if (const auto best = near.Best()) {
      hint_ = "did you mean " + (prefixed ? ToUtf8(kProgIdPrefix) : "") + *best + "?";
    }
    throw;
  }
}

const ImmediateSession::Variable* ImmediateSession::FindVariable(StringView name) const {
  const auto it = variables_.find(Folded(name));
  return it == variables_.end() ? nullptr : &it->second;
}

void ImmediateSession::UnknownName(const Expr& e) const {
  NearestName near(e.name);
  for (const auto& entry : variables_) near.Consider(entry.second.name);
  near.Consider(u"Err");
  for (const String& f : FunctionNames()) near.Consider(f);
  for (const String& w : LiteralWords()) near.Consider(w);
  for (const ClassInfo* c : tsruntime::RegisteredClasses()) near.Consider(c->name);
  for (const tsruntime::EnumInfo* en : tsruntime::RegisteredEnums()) near.Consider(en->name);
  Fault((e.called ? "unknown function " : "unknown name ") + ToUtf8(e.name), e, Hint(near));
}

}  // namespace tsrt
