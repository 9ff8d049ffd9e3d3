// clsTSErrors.ToObject on any text returns False and raises nothing; what it read packs
// to a text that reads back to the same records.
#include <cstdlib>

#include "fuzz_input.h"
#include "tsruntime/clsTSErrors.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto errors = New<clsTSErrors>();
  if (errors->ToObject(fuzz::Utf16(data, size))) std::abort();
  const String packed = errors->ToString();
  auto again = New<clsTSErrors>();
  if (again->ToObject(packed) || again->Count() != errors->Count()) std::abort();
  if (again->ToString() != packed || again->GetAsText() != errors->GetAsText()) std::abort();
  return 0;
}
