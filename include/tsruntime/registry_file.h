// The registry's text export format, to carry settings to and from the store behind
// `clsZKRegistry`.
//
//   ExportRegistryKey(u"HKEY_CURRENT_USER\\Software\\Acme", "acme.reg");
//   ImportRegistryFile("acme.reg");
//
// The format is the one registry editors write: UTF-16LE with a byte-order mark, the
// header line "Windows Registry Editor Version 5.00", then for each key a "[ROOT\path]"
// line, its values one per line, and a blank line; every line ends in CR LF.
//
//   @="default value"               the key's default value
//   "Name"="text"                   a string; "\\" and "\"" stand for \ and "
//   "Count"=dword:0000002a          a 32-bit integer, 8 lower-case hex digits
//   "Blob"=hex:01,02,ff             binary; long lists wrap after a "\" onto lines
//                                   indented by two spaces
//   "Other"=hex(2):41,00,00,00      any other type, by its number, as its bytes
//
// A string that is not plain text with one terminating zero (an embedded zero, a line
// break, no terminator) is written as hex(1): so that it comes back exactly. An export
// lists the key, then the keys below it depth first, children in the order of their
// names compared without regard to case, values in the order they were first written:
// importing an export and exporting it again gives the same bytes. A key or value name
// with a line break fits no line of the format and is refused.
//
// Import reads what registry editors write: the file in UTF-16LE or UTF-8 after a
// byte-order mark, else in ANSI; the older "REGEDIT4" form, whose string types in hex(N)
// are ANSI bytes; the abbreviations HKCU, HKLM, HKCR, HKU and HKCC; blanks around "="
// and at either end of a line; hex lists of any type continued after a "\" that ends
// the line; ";" comment lines; and deletions, applied in file order:
//
//   [-HKEY_CURRENT_USER\Software\Old]  the key with everything below it
//   "Name"=-                           the value (@=- the default value)
//
// Deleting what is not there is no error. docs/registry.md lists what each line becomes.
#pragma once

#include <string>

#include "tsruntime/automation/string.h"

namespace tsruntime {

// Writes the key and everything below it to `file`, replacing the file only once the
// new one is complete. Raises path not found (76) for a key that does not exist, invalid
// procedure call (5) for a name with a line break, path/file access error (75) when the
// file cannot be written.
void ExportRegistryKey(StringView key, const std::string& file);

// Applies `file` to the store, all or nothing: the whole text and the permission for
// every root it touches are checked first, then every database involved is locked and
// written, and all commit together. Raises file not found (53) for a missing file,
// invalid procedure call (5) with the line number for text that is not in the format,
// permission denied (70) for a machine-wide root when not running as root, path/file
// access error (75) when the store cannot be written.
void ImportRegistryFile(const std::string& file);

}  // namespace tsruntime
