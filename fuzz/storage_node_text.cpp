// clsZKStorage.ToObject on any text returns True or False; a tree it read writes a text
// that reads back True. Rewriting settles within a few rounds without changing the text's
// length: only a negative type code (which only a read text can hold) loses a digit a
// round, because its four characters keep the sign.
#include <cstdlib>

#include "fuzz_input.h"
#include "tsruntime/clsZKStorage.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto node = New<clsZKStorage>();
  if (!node->ToObject(fuzz::Utf16(data, size))) return 0;
  bool failed = true;
  String written = node->ToString(failed);
  if (failed) std::abort();
  for (int round = 0;; ++round) {
    auto again = New<clsZKStorage>();
    if (!again->ToObject(written)) std::abort();
    const String rewritten = again->ToString(failed);
    if (failed || rewritten.size() != written.size()) std::abort();
    if (rewritten == written) return 0;
    if (round == 5) std::abort();
    written = rewritten;
  }
}
