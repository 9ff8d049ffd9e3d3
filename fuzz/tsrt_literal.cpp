// tsrt's literal reader on any text: it reads a value or refuses with LiteralError, and
// nothing else escapes. What it reads prints as a literal that reads back as the same
// type and value, printed plainly and printed for its own type as a declared argument
// (then converted to that type, as a call would). Printing both again compares them
// exactly, -0 included.
#include <cstdlib>
#include <string_view>

#include "literal_parser.h"
#include "literal_printer.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Variant value;
  try {
    value = tsrt::ParseArgument(std::string_view(reinterpret_cast<const char*>(data), size)).value;
  } catch (const tsrt::LiteralError&) {
    return 0;
  }
  const bool declarable =
      !value.isArray() && !value.isObject() && value.type() != VarType::kError;
  for (const VarType declared : {VarType::kVariant, value.type()}) {
    if (declared != VarType::kVariant && !declarable) break;
    const std::string printed = tsrt::PrintLiteral(value, declared);
    Variant back = tsrt::ParseLiteral(printed);  // a refusal escapes and fails the run
    if (declared != VarType::kVariant) back = ChangeType(back, declared);
    if (!(back == value) || tsrt::PrintLiteral(back) != tsrt::PrintLiteral(value)) std::abort();
  }
  return 0;
}
