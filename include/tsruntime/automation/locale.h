// The user's locale, as far as the library needs it: the decimal separator of number
// text, case mapping and the text compare mode.
//
// The locale comes from the environment (LC_ALL, then LC_COLLATE / LC_CTYPE /
// LC_NUMERIC, then LANG; "C" and "POSIX" mean English with '.' as decimal separator).
// A host or a test can set another one for the calling thread.
#pragma once

#include <string>

#include "tsruntime/automation/string.h"

namespace tsruntime {

// The calling thread's locale name in ICU form ("ru_RU", "en_US").
std::string CurrentLocale();

// Sets the calling thread's locale ("ru_RU", "ru_RU.UTF-8", "en"); an empty name goes
// back to the environment's.
void SetThreadLocale(std::string_view name);

// Sets the thread's locale for the lifetime of the object, then restores the old one.
class ScopedLocale {
 public:
  explicit ScopedLocale(std::string_view name);
  ~ScopedLocale();
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

 private:
  std::string saved_;
};

// The locale's decimal separator (',' for Russian, '.' for English).
char16_t DecimalSeparator();

// Upper and lower case in the thread's locale. Each code point is mapped on its own,
// so the result always has the length of the input (no "ß" to "SS").
String ToUpper(StringView text);
String ToLower(StringView text);

}  // namespace tsruntime
