// A line typed into tsrt's interactive session, any text: it reads as statements or is
// refused with LiteralError, and nothing else escapes. Lines that only print values
// built from literals (no names, so nothing is created or called) also run, through the
// runtime's joins and comparisons, and must print or report an error.
#include <sstream>
#include <string_view>

#include "immediate_session.h"

using tsrt::immediate::Expr;
using tsrt::immediate::Statement;

namespace {

bool OnlyLiterals(const Expr& e) {
  switch (e.kind) {
    case Expr::Kind::kLiteral:
      return true;
    case Expr::Kind::kParen:
      return OnlyLiterals(*e.object);
    case Expr::Kind::kBinary:
      return OnlyLiterals(*e.object) && OnlyLiterals(*e.right);
    default:
      return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  if (line.find('\n') != std::string_view::npos) return 0;
  std::vector<Statement> statements;
  try {
    statements = tsrt::immediate::ParseLine(tsruntime::FromUtf8(line));
  } catch (const tsrt::LiteralError&) {
    return 0;
  }
  for (const Statement& st : statements) {
    if (st.kind != Statement::Kind::kPrint) return 0;
    for (const auto& item : st.items) {
      if (!OnlyLiterals(*item)) return 0;
    }
  }
  tsrt::ImmediateSession session;
  std::ostringstream out, err;
  session.RunLine(line, out, err);
  return 0;
}
