#include "written_back.h"

#include "literal_printer.h"

namespace tsrt {

std::string WrittenBackLines(const tsruntime::Invocation& done) {
  std::string lines;
  const tsruntime::MemberInfo& m = *done.member;
  for (size_t k = 0; k < m.params.size(); ++k) {
    if (!m.params[k].writesBack || done.origin[k] < 0) continue;
    lines += tsruntime::ToUtf8(m.params[k].name) + " = " +
             PrintLiteral(done.params[k], m.params[k].type) + '\n';
  }
  return lines;
}

}  // namespace tsrt
