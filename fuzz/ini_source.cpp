// clsZKIniFile on any source string: the index builds or the assignment is refused,
// every key of every line is looked up, and PutData rewrites what GetData finds.
#include <algorithm>

#include "fuzz_input.h"
#include "tsruntime/clsZKIniFile.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const String text = fuzz::Utf16(data, size);
  auto ini = New<clsZKIniFile>();
  // The first two units, when there are enough, choose the separators.
  if (text.size() > 2 && text[0] != u'\0') ini->LetSepData(text.substr(0, 1));
  if (text.size() > 2 && text[1] != u'\0') ini->LetSepComment(text.substr(1, 1));
  try {
    ini->LetSourceString(text);
    String value;
    size_t start = 0;
    for (int probes = 0; probes < 64 && start < text.size(); ++probes) {
      const size_t end = std::min(text.find(u'=', start), text.size());
      const String key = text.substr(start, std::min<size_t>(end - start, 16));
      if (ini->GetData(key, value)) ini->PutData(key, value + u"x");
      start = end + 1;
    }
    (void)ini->SourceString();
  } catch (const Error&) {  // an empty source, or a key that is not there
  }
  return 0;
}
