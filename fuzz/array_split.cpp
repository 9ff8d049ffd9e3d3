// ArraySplit on any text returns an array or raises its defined error; what it
// returns joins back to a text that splits to the same strings.
#include <cstdlib>

#include "fuzz_input.h"
#include "tsruntime/clsZKString.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Ref<clsZKString> s = New<clsZKString>();
  SafeArray parts;
  try {
    parts = s->ArraySplit(fuzz::Utf16(data, size));
  } catch (const Error&) {
    return 0;
  }
  const SafeArray again = s->ArraySplit(s->ArrayJoin(parts));
  if (again.ToStrings() != parts.ToStrings()) std::abort();
  return 0;
}
