// The registry's text export format (see registry_file.h for its rules), between a file's
// bytes and the store's keys. Files and the store itself are registry_file.cpp's.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "registry_store.h"
#include "tsruntime/automation/error.h"

namespace tsruntime::registry {

// The text of `keys`: the header line, then each key with its values (deletions as
// "[-key]" and "name"=-). Raises invalid procedure call (5) for a key or value name with
// a line break, which no line of the format can hold.
String ExportText(const std::vector<Key>& keys);

// The text of an export file: UTF-16LE after its byte-order mark, UTF-8 after its
// byte-order mark, else ANSI.
String DecodeExportFile(std::span<const uint8_t> bytes);

// The keys and values of an export text, deletions included, in file order. Raises
// invalid procedure call (5) with the line number for text that is not in the format.
std::vector<Key> ParseExportText(StringView text);

// Raises the host runtime's `code` with its standard text, ": " and `detail`.
[[noreturn]] void Fail(RuntimeError code, const String& detail);

}  // namespace tsruntime::registry
