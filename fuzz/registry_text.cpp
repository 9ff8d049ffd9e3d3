// Any text either parses as a registry export or raises its defined error; what parses
// writes back to a text that parses to the same keys and values.
#include <cstdlib>

#include "../system/registry_text.h"
#include "fuzz_input.h"

using namespace tsruntime;

namespace {

bool Same(const std::vector<registry::Key>& a, const std::vector<registry::Key>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i].root != b[i].root || a[i].path != b[i].path) return false;
    if (a[i].values.size() != b[i].values.size()) return false;
    for (size_t j = 0; j < a[i].values.size(); ++j) {
      const registry::Value &x = a[i].values[j], &y = b[i].values[j];
      if (x.name != y.name || x.type != y.type || x.data != y.data) return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<registry::Key> keys;
  try {
    keys = registry::ParseExportText(fuzz::Utf16(data, size));
  } catch (const Error&) {
    return 0;
  }
  if (!Same(registry::ParseExportText(registry::ExportText(keys)), keys)) std::abort();
  return 0;
}
