#include "immediate_syntax.h"

#include <string>

#include "text_cursor.h"

namespace tsrt::immediate {
namespace {

using tsruntime::String;
using tsruntime::StringView;

// Deep enough for any line typed by hand, shallow enough for the stack.
constexpr int kMaxDepth = 64;

class LineParser : public TextCursor {
 public:
  explicit LineParser(StringView line) : TextCursor(line, 0) {}

  std::vector<Statement> Line() {
    std::vector<Statement> out;
    for (;;) {
      Spaces();
      if (AtEnd() || Peek() == u'\'') return out;
      if (Peek() == u':') {
        ++i_;
        continue;
      }
      out.push_back(OneStatement());
      if (!AtStatementEnd()) Fail("expected ':' or the end of the line");
    }
  }

 private:
  StringView Name(const char* what) {
    const StringView w = Word();
    if (w.empty()) Fail(std::string("expected ") + what);
    return w;
  }
  bool TakeWord(StringView keyword) {
    Spaces();
    if (!Is(PeekWord(), keyword)) return false;
    i_ += keyword.size();
    return true;
  }
  // The end of a statement: the line's end, a ':' (not ":="), or a comment.
  bool AtStatementEnd() {
    Spaces();
    return AtEnd() || (Peek() == u':' && Peek(1) != u'=') || Peek() == u'\'';
  }

  Statement OneStatement() {
    const size_t start = i_;
    Statement st;
    if (Peek() == u'?' || TakeWord(u"Print")) {
      if (Peek() == u'?') ++i_;
      PrintList(st);
      return st;
    }
    if (TakeWord(u"Set") || TakeWord(u"Let")) {
      st.kind = Is(s_.substr(start, 3), u"Set") ? Statement::Kind::kSet : Statement::Kind::kAssign;
      Spaces();
      st.target = Target();
      Expect(u'=', "'='");
      st.value = Expression();
      return st;
    }
    if (TakeWord(u"Call")) {
      Spaces();
      st.kind = Statement::Kind::kCall;
      st.target = Reference(true);
      if (!IsCall(*st.target)) FailAt("expected a member or procedure to call", start);
      return st;
    }
    if (TakeWord(u"On")) {
      if (!TakeWord(u"Error")) Fail("expected Error");
      if (TakeWord(u"Resume")) {
        if (!TakeWord(u"Next")) Fail("expected Next");
        st.kind = Statement::Kind::kResumeNext;
      } else if (TakeWord(u"GoTo")) {
        Spaces();
        if (Peek() != u'0' || IsWordChar(Peek(1))) Fail("only On Error GoTo 0 is understood");
        ++i_;
        st.kind = Statement::Kind::kStopResuming;
      } else {
        Fail("expected Resume Next or GoTo 0");
      }
      return st;
    }
    if (TakeWord(u"Exit") || TakeWord(u"Quit")) {
      st.kind = Statement::Kind::kQuit;
      return st;
    }
    if (PeekWord().empty()) Fail("expected a statement (? prints a value)");
    ExprPtr ref = Reference(true);
    Spaces();
    if (Peek() == u'=') {
      ++i_;
      CheckTarget(*ref, start);
      st.kind = Statement::Kind::kAssign;
      st.target = std::move(ref);
      st.value = Expression();
      return st;
    }
    if (ref->kind == Expr::Kind::kMember && !ref->called && !AtStatementEnd()) {
      auto call = std::make_shared<Expr>(*ref);
      call->called = true;
      call->args = ArgumentsUntilStatementEnd();
      ref = std::move(call);
    }
    if (ref->kind == Expr::Kind::kMember && Is(ref->name, u"Clear") && ref->args.empty() &&
        ref->object->kind == Expr::Kind::kName && Is(ref->object->name, u"Err")) {
      st.kind = Statement::Kind::kClearError;
      return st;
    }
    if (!IsCall(*ref)) FailAt("expected a statement (? prints a value)", start);
    st.kind = Statement::Kind::kCall;
    st.target = std::move(ref);
    return st;
  }

  static bool IsCall(const Expr& e) {
    return e.kind == Expr::Kind::kMember || (e.kind == Expr::Kind::kName && e.called);
  }

  void CheckTarget(const Expr& e, size_t start) const {
    if (e.kind == Expr::Kind::kName && !e.called && IsLiteralWord(e.name)) {
      FailAt("cannot assign to " + tsruntime::ToUtf8(e.name), start);
    }
  }

  ExprPtr Target() {
    const size_t start = i_;
    if (PeekWord().empty()) Fail("expected a variable or a property");
    ExprPtr t = Reference(true);
    CheckTarget(*t, start);
    return t;
  }

  void PrintList(Statement& st) {
    st.kind = Statement::Kind::kPrint;
    while (!AtStatementEnd()) {
      st.items.push_back(Expression());
      Spaces();
      if (Peek() != u',' && Peek() != u';') break;
      st.separators.push_back(static_cast<char>(Peek()));
      ++i_;
    }
  }

  // --- Expressions --------------------------------------------------------------------

  ExprPtr Expression() {
    if (++depth_ > kMaxDepth) Fail("expression nested too deeply");
    ExprPtr left = Concatenation();
    for (;;) {
      Spaces();
      const size_t at = i_;
      String op;
      if (Peek() == u'<' && (Peek(1) == u'>' || Peek(1) == u'=')) {
        op = s_.substr(i_, 2);
      } else if (Peek() == u'>' && Peek(1) == u'=') {
        op = s_.substr(i_, 2);
      } else if (Peek() == u'<' || Peek() == u'>' || Peek() == u'=') {
        op = s_.substr(i_, 1);
      } else if (Is(PeekWord(), u"Is")) {
        op = u"Is";
      } else {
        break;
      }
      i_ += op.size();
      left = Binary(std::move(left), std::move(op), at, Concatenation());
    }
    --depth_;
    return left;
  }

  ExprPtr Concatenation() {
    ExprPtr left = Operand();
    for (;;) {
      Spaces();
      if (Peek() != u'&') return left;
      const size_t at = i_++;
      left = Binary(std::move(left), u"&", at, Operand());
    }
  }

  static ExprPtr Binary(ExprPtr left, String op, size_t at, ExprPtr right) {
    auto e = std::make_shared<Expr>();
    e->kind = Expr::Kind::kBinary;
    e->column = at + 1;
    e->name = std::move(op);
    e->object = std::move(left);
    e->right = std::move(right);
    return e;
  }

  ExprPtr Operand() {
    Spaces();
    const size_t at = i_;
    const char16_t c = Peek();
    if (c == u'(') {
      ++i_;
      auto e = std::make_shared<Expr>();
      e->kind = Expr::Kind::kParen;
      e->column = at + 1;
      e->object = Expression();
      Expect(u')', "')'");
      return e;
    }
    const StringView w = PeekWord();
    if (w.empty()) return Literal();
    if (Is(w, u"New")) {
      i_ += w.size();
      Spaces();
      auto e = std::make_shared<Expr>();
      e->kind = Expr::Kind::kNew;
      e->column = i_ + 1;
      e->name = Name("a class name after New");
      if (Is(e->name, u"TSRuntimeLib") && Peek() == u'.') {
        ++i_;
        e->name = Name("a class name after New");
      }
      return e;
    }
    if (ConversionNamed(w)) {
      // CLng(5) is a literal; CLng(x) a conversion of the value at run time.
      try {
        return Literal();
      } catch (const LiteralError&) {
        i_ = at;
      }
      return Reference(false);
    }
    if (IsLiteralWord(w)) return Literal();
    return Reference(false);
  }

  ExprPtr Literal() {
    auto e = std::make_shared<Expr>();
    e->column = i_ + 1;
    e->literal = ParseLiteralAt(s_, i_);
    return e;
  }

  // name [(args)] {.member [(args)]}. At the head of a statement an argument list must
  // touch the name: "s.Trim (x), y" passes (x) as the first of two arguments.
  ExprPtr Reference(bool statement_head) {
    auto e = std::make_shared<Expr>();
    e->kind = Expr::Kind::kName;
    e->column = i_ + 1;
    e->name = Name("a name");
    ExprPtr ref = CallArguments(std::move(e), statement_head);
    while (Peek() == u'.') {
      ++i_;
      auto m = std::make_shared<Expr>();
      m->kind = Expr::Kind::kMember;
      m->column = i_ + 1;
      m->name = Name("a member name after '.'");
      m->object = std::move(ref);
      ref = CallArguments(std::move(m), statement_head);
    }
    return ref;
  }

  ExprPtr CallArguments(std::shared_ptr<Expr> e, bool statement_head) {
    const size_t save = i_;
    if (!statement_head) Spaces();
    if (Peek() != u'(') {
      i_ = save;
      return e;
    }
    ++i_;
    e->called = true;
    Spaces();
    if (Peek() == u')') {
      ++i_;
      return e;
    }
    for (;;) {
      e->args.push_back(Argument(u','));
      Spaces();
      if (Peek() == u')') {
        ++i_;
        return e;
      }
      if (Peek() != u',') Fail("expected ',' or ')'");
      ++i_;
    }
  }

  std::vector<ArgExpr> ArgumentsUntilStatementEnd() {
    std::vector<ArgExpr> args;
    for (;;) {
      args.push_back(Argument(u','));
      if (AtStatementEnd()) return args;
      if (Peek() != u',') Fail("expected ',' between arguments");
      ++i_;
    }
  }

  // One argument: `Name:=value`, a value, or nothing before the next ',' or the end.
  ArgExpr Argument(char16_t separator) {
    Spaces();
    ArgExpr a;
    if (Peek() == separator || Peek() == u')' || AtStatementEnd()) return a;
    const size_t save = i_;
    const StringView w = PeekWord();
    if (!w.empty()) {
      i_ += w.size();
      Spaces();
      if (Peek() == u':' && Peek(1) == u'=') {
        i_ += 2;
        a.name = w;
      } else {
        i_ = save;
      }
    }
    a.value = Expression();
    return a;
  }

  int depth_ = 0;
};

}  // namespace

std::vector<Statement> ParseLine(StringView line) { return LineParser(line).Line(); }

}  // namespace tsrt::immediate
