// The registry's text export format (see registry_file.h for its rules), between text and
// the store's keys. Files, byte-order marks and the store itself are registry_file.cpp's.
#pragma once

#include <vector>

#include "registry_store.h"
#include "tsruntime/automation/error.h"

namespace tsruntime::registry {

// The text of `keys`: the header line, then each key with its values.
String ExportText(const std::vector<Key>& keys);

// The keys and values of an export text, in file order. Raises invalid procedure call (5)
// with the line number for text that is not in the format.
std::vector<Key> ParseExportText(StringView text);

// Raises the host runtime's `code` with its standard text, ": " and `detail`.
[[noreturn]] void Fail(RuntimeError code, const String& detail);

}  // namespace tsruntime::registry
