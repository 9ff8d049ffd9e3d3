#include "completion.h"

#include <algorithm>
#include <cctype>

#include "tsruntime/automation/err_object.h"

namespace tsrt {
namespace {

using tsruntime::ClassInfo;
using tsruntime::EnumInfo;
using tsruntime::String;
using tsruntime::StringView;
using tsruntime::ToUtf8;

bool IsWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

bool SameNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  });
}

bool EndsWithNoCase(std::string_view text, std::string_view tail) {
  return text.size() >= tail.size() && SameNoCase(text.substr(text.size() - tail.size()), tail);
}

std::string_view TrimRight(std::string_view s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// Candidates that begin with the typed word, in any case.
class Matches {
 public:
  explicit Matches(std::string_view word) : word_(word) {}
  void Offer(std::string_view candidate) {
    if (candidate.size() >= word_.size() && SameNoCase(candidate.substr(0, word_.size()), word_)) {
      found_.emplace_back(candidate);
    }
  }
  void Offer(StringView candidate) { Offer(ToUtf8(candidate)); }
  std::vector<std::string> Sorted() {
    std::sort(found_.begin(), found_.end());
    found_.erase(std::unique(found_.begin(), found_.end()), found_.end());
    return std::move(found_);
  }

 private:
  std::string_view word_;
  std::vector<std::string> found_;
};

// What the names before a '.' stand for.
struct Scope {
  const ClassInfo* cls = nullptr;
  const EnumInfo* enumeration = nullptr;
  bool err = false;       // the Err object: its members and Clear
  bool classes = false;   // "TSRuntimeLib."
};

const EnumInfo* EnumNamed(std::string_view name) {
  for (const EnumInfo* e : tsruntime::RegisteredEnums()) {
    if (SameNoCase(ToUtf8(e->name), name)) return e;
  }
  return nullptr;
}

const tsruntime::MemberInfo* Readable(const ClassInfo& c, StringView name) {
  const tsruntime::MemberInfo* m = c.find(name, tsruntime::MemberKind::kMethod);
  return m ? m : c.find(name, tsruntime::MemberKind::kPropertyGet);
}

// The names of "a.b(1).c" ending at `end`, last first; argument lists are skipped.
std::vector<std::string> ChainBefore(std::string_view text, size_t end) {
  std::vector<std::string> names;
  size_t p = end;
  for (;;) {
    while (p > 0 && text[p - 1] == ')') {
      int depth = 0;
      size_t q = p;
      do {
        --q;
        if (text[q] == ')') ++depth;
        if (text[q] == '(') --depth;
      } while (q > 0 && depth > 0);
      if (depth != 0) return {};
      p = q;
    }
    size_t start = p;
    while (start > 0 && IsWordChar(text[start - 1])) --start;
    if (start == p) return {};
    names.emplace_back(text.substr(start, p - start));
    if (start == 0 || text[start - 1] != '.') return names;
    p = start - 1;
  }
}

Scope ScopeOf(const ImmediateSession& session, std::vector<std::string> chain) {
  Scope scope;
  if (chain.empty()) return scope;
  const String first = tsruntime::FromUtf8(chain.back());
  chain.pop_back();
  const ClassInfo* cls = nullptr;
  if (const ImmediateSession::Variable* var = session.FindVariable(first)) {
    const tsruntime::Variant& v = var->value;
    if (v.isObject() && v.asObject()) cls = &v.asObject()->classInfo();
  } else if (tsruntime::EqualsAsciiNoCase(first, u"Err")) {
    cls = &tsruntime::ErrObject::TypeInfo();
    scope.err = chain.empty();
  } else if (tsruntime::EqualsAsciiNoCase(first, u"TSRuntimeLib")) {
    if (chain.empty()) {
      scope.classes = true;
      return scope;
    }
    cls = tsruntime::FindClass(tsruntime::FromUtf8(chain.back()));
    chain.pop_back();
  } else if (const EnumInfo* e = EnumNamed(ToUtf8(first))) {
    if (chain.empty()) scope.enumeration = e;
    return scope;
  } else {
    cls = tsruntime::FindClass(first);
  }
  for (; cls && !chain.empty(); chain.pop_back()) {
    const tsruntime::MemberInfo* m = Readable(*cls, tsruntime::FromUtf8(chain.back()));
    cls = m && m->returnClass ? &m->returnClass() : nullptr;
  }
  scope.cls = cls;
  return scope;
}

// The member whose argument list the cursor is in: the innermost open "(" after a
// member's name, or a call statement written without parentheses ("s.Trim x, ").
const tsruntime::MemberInfo* CalledMember(const ImmediateSession& session, std::string_view text) {
  std::vector<size_t> open;
  size_t statement = 0;
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '(') open.push_back(i);
    if (c == ')' && !open.empty()) open.pop_back();
    if (c == ':' && open.empty() && (i + 1 >= text.size() || text[i + 1] != '=')) statement = i + 1;
  }
  size_t name_end;
  if (!open.empty()) {
    name_end = open.back();
  } else {
    // "obj.Member args": the statement's first word run, followed by a space.
    size_t p = statement;
    while (p < text.size() && (text[p] == ' ' || text[p] == '\t')) ++p;
    if (SameNoCase(text.substr(p, 5), "Call ")) p += 5;
    size_t q = p;
    while (q < text.size() && (IsWordChar(text[q]) || text[q] == '.')) ++q;
    if (q >= text.size() || text[q] != ' ' || text.substr(p, q - p).find('.') == std::string_view::npos) {
      return nullptr;
    }
    name_end = q;
  }
  std::vector<std::string> chain = ChainBefore(text, name_end);
  if (chain.size() < 2) return nullptr;
  const String member = tsruntime::FromUtf8(chain.front());
  chain.erase(chain.begin());
  const Scope scope = ScopeOf(session, std::move(chain));
  return scope.cls ? Readable(*scope.cls, member) : nullptr;
}

bool AtStatementStart(std::string_view before) {
  before = TrimRight(before);
  return before.empty() || (before.back() == ':' && !EndsWithNoCase(before, ":="));
}

}  // namespace

Completion Complete(const ImmediateSession& session, std::string_view text) {
  size_t start = text.size();
  while (start > 0 && IsWordChar(text[start - 1])) --start;
  const std::string_view before = text.substr(0, start);
  Matches matches(text.substr(start));
  Completion out{start, {}};

  if (std::count(before.begin(), before.end(), '"') % 2 == 1) {
    // Inside text: only CreateObject("...") has names to offer.
    const size_t quote = before.rfind('"');
    const std::string_view typed = before.substr(quote + 1);
    if (!EndsWithNoCase(TrimRight(before.substr(0, quote)), "CreateObject(")) return out;
    if (typed.empty()) matches.Offer(std::string_view("TSRuntimeLib."));
    if (typed.empty() || SameNoCase(typed, "TSRuntimeLib.")) {
      for (const ClassInfo* c : tsruntime::RegisteredClasses()) {
        if (c->creatable) matches.Offer(c->name);
      }
    }
    out.candidates = matches.Sorted();
    return out;
  }

  if (!before.empty() && before.back() == '.') {
    const Scope scope = ScopeOf(session, ChainBefore(text, start - 1));
    if (scope.cls) {
      for (const tsruntime::MemberInfo& m : scope.cls->members) matches.Offer(m.name);
    }
    if (scope.err) matches.Offer(std::string_view("Clear"));
    if (scope.enumeration) {
      for (const auto& member : scope.enumeration->members) matches.Offer(member.name);
    }
    if (scope.classes) {
      for (const ClassInfo* c : tsruntime::RegisteredClasses()) matches.Offer(c->name);
    }
    out.candidates = matches.Sorted();
    return out;
  }

  if (EndsWithNoCase(TrimRight(before), "New") && TrimRight(before).size() < before.size()) {
    for (const ClassInfo* c : tsruntime::RegisteredClasses()) {
      if (c->creatable) matches.Offer(c->name);
    }
    out.candidates = matches.Sorted();
    return out;
  }

  for (const auto& entry : session.variables()) matches.Offer(entry.second.name);
  matches.Offer(std::string_view("Err"));
  if (AtStatementStart(before)) {
    for (const char* keyword : {"Set", "Let", "Call", "Print", "On Error Resume Next",
                                "On Error GoTo 0", "Exit", "Quit"}) {
      matches.Offer(std::string_view(keyword));
    }
    out.candidates = matches.Sorted();
    return out;
  }
  if (const tsruntime::MemberInfo* m = CalledMember(session, before)) {
    for (const tsruntime::ParamInfo& p : m->params) matches.Offer(ToUtf8(p.name) + ":=");
  }
  for (const String& f : ImmediateSession::FunctionNames()) matches.Offer(f);
  for (const String& w : LiteralWords()) matches.Offer(w);
  matches.Offer(std::string_view("New"));
  for (const ClassInfo* c : tsruntime::RegisteredClasses()) matches.Offer(c->name);
  for (const EnumInfo* e : tsruntime::RegisteredEnums()) matches.Offer(e->name);
  out.candidates = matches.Sorted();
  return out;
}

}  // namespace tsrt
