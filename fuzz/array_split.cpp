// The packed-array text both ways. Read as text, any input splits to an array or raises
// its defined error, and what it splits to joins back to a text that splits the same.
// Read as a list of strings (first byte odd), the list joins to a text that splits back
// to exactly that list.
#include <cstdlib>

#include "fuzz_input.h"
#include "tsruntime/clsZKString.h"

using namespace tsruntime;

namespace {

void SplitJoinSplit(const Ref<clsZKString>& s, const String& text) {
  SafeArray parts;
  try {
    parts = s->ArraySplit(text);
  } catch (const Error&) {
    return;
  }
  const SafeArray again = s->ArraySplit(s->ArrayJoin(parts));
  if (again.ToStrings() != parts.ToStrings()) std::abort();
}

void JoinSplit(const Ref<clsZKString>& s, fuzz::Input& in) {
  std::vector<String> list(1 + in.Below(8));  // an empty list packs to "", which is one ""
  for (String& item : list) item = in.Text(40);
  const SafeArray packed = SafeArray::FromStrings(list);
  if (s->ArraySplit(s->ArrayJoin(packed)).ToStrings() != list) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Ref<clsZKString> s = New<clsZKString>();
  if (size > 0 && data[0] % 2) {
    fuzz::Input in(data + 1, size - 1);
    JoinSplit(s, in);
  } else {
    SplitJoinSplit(s, fuzz::Utf16(data, size));
  }
  return 0;
}
