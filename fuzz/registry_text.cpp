// Any file either parses as a registry export or raises its defined error; what parses
// writes back to a text that parses to the same keys, values and deletions, unless a
// name holds a line break, which export refuses.
#include <cstdlib>

#include "../system/registry_text.h"

using namespace tsruntime;

namespace {

bool Same(const std::vector<registry::Key>& a, const std::vector<registry::Key>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i].root != b[i].root || a[i].path != b[i].path || a[i].deleted != b[i].deleted) {
      return false;
    }
    if (a[i].values.size() != b[i].values.size()) return false;
    for (size_t j = 0; j < a[i].values.size(); ++j) {
      const registry::Value &x = a[i].values[j], &y = b[i].values[j];
      if (x.name != y.name || x.deleted != y.deleted) return false;
      if (!x.deleted && (x.type != y.type || x.data != y.data)) return false;
    }
  }
  return true;
}

bool HasLineBreak(const String& text) { return text.find_first_of(u"\r\n") != String::npos; }

bool AnyNameWithLineBreak(const std::vector<registry::Key>& keys) {
  for (const registry::Key& k : keys) {
    if (HasLineBreak(k.path)) return true;
    for (const registry::Value& v : k.values) {
      if (HasLineBreak(v.name)) return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<registry::Key> keys;
  try {
    keys = registry::ParseExportText(registry::DecodeExportFile(std::span(data, size)));
  } catch (const Error&) {
    return 0;
  }
  String text;
  try {
    text = registry::ExportText(keys);
  } catch (const Error&) {
    if (!AnyNameWithLineBreak(keys)) std::abort();
    return 0;
  }
  if (!Same(registry::ParseExportText(text), keys)) std::abort();
  return 0;
}
