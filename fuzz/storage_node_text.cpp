// clsZKStorage.ToObject on any text returns True or False; a tree it read writes a text
// that reads back True and writes itself again unchanged.
#include <cstdlib>

#include "fuzz_input.h"
#include "tsruntime/clsZKStorage.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto node = New<clsZKStorage>();
  if (!node->ToObject(fuzz::Utf16(data, size))) return 0;
  bool failed = true;
  const String written = node->ToString(failed);
  auto again = New<clsZKStorage>();
  if (failed || !again->ToObject(written)) std::abort();
  const String rewritten = again->ToString(failed);
  auto third = New<clsZKStorage>();
  if (!third->ToObject(rewritten) || third->ToString(failed) != rewritten) std::abort();
  return 0;
}
