#include "tsruntime/automation/locale.h"

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>

#include <cstdlib>
#include <map>

namespace tsruntime {
namespace {

// "ru_RU.UTF-8@euro" -> "ru_RU"; "C", "POSIX" and "" -> "en_US".
std::string Normalize(std::string_view name) {
  std::string s(name.substr(0, name.find_first_of(".@")));
  if (s.empty() || s == "C" || s == "POSIX") return "en_US";
  return s;
}

const std::string& EnvironmentLocale() {
  static const std::string name = [] {
    for (const char* var : {"LC_ALL", "LC_COLLATE", "LC_CTYPE", "LC_NUMERIC", "LANG"}) {
      const char* v = std::getenv(var);
      if (v && *v) return Normalize(v);
    }
    return Normalize("");
  }();
  return name;
}

thread_local std::string thread_locale;

bool IsTurkic() {
  const std::string& name = CurrentLocale();
  return name.rfind("tr", 0) == 0 || name.rfind("az", 0) == 0;
}

template <class Map>
String MapCase(StringView text, Map map) {
  String out(text);
  for (size_t i = 0; i < out.size(); ++i) {
    char16_t c = out[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < out.size() && out[i + 1] >= 0xDC00 &&
        out[i + 1] <= 0xDFFF) {
      const UChar32 cp = 0x10000 + ((c - 0xD800) << 10) + (out[i + 1] - 0xDC00);
      const UChar32 m = map(cp);
      if (m >= 0x10000) {  // keep the length: only a mapping within the plane is taken
        out[i] = static_cast<char16_t>(0xD800 + ((m - 0x10000) >> 10));
        out[i + 1] = static_cast<char16_t>(0xDC00 + ((m - 0x10000) & 0x3FF));
      }
      ++i;
      continue;
    }
    const UChar32 m = map(c);
    if (m < 0x10000) out[i] = static_cast<char16_t>(m);
  }
  return out;
}

}  // namespace

std::string CurrentLocale() {
  return thread_locale.empty() ? EnvironmentLocale() : thread_locale;
}

void SetThreadLocale(std::string_view name) {
  thread_locale = name.empty() ? std::string() : Normalize(name);
}

ScopedLocale::ScopedLocale(std::string_view name) : saved_(thread_locale) {
  SetThreadLocale(name);
}
ScopedLocale::~ScopedLocale() { thread_locale = saved_; }

char16_t DecimalSeparator() {
  thread_local std::map<std::string, char16_t> cache;
  const std::string name = CurrentLocale();
  auto it = cache.find(name);
  if (it != cache.end()) return it->second;
  UErrorCode status = U_ZERO_ERROR;
  icu::DecimalFormatSymbols symbols(icu::Locale(name.c_str()), status);
  char16_t sep = u'.';
  if (U_SUCCESS(status)) {
    const icu::UnicodeString s =
        symbols.getSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol);
    if (s.length() == 1) sep = s.charAt(0);
  }
  return cache[name] = sep;
}

String ToUpper(StringView text) {
  const bool turkic = IsTurkic();
  return MapCase(text, [turkic](UChar32 c) -> UChar32 {
    if (turkic && c == u'i') return 0x130;
    return u_toupper(c);
  });
}

String ToLower(StringView text) {
  const bool turkic = IsTurkic();
  return MapCase(text, [turkic](UChar32 c) -> UChar32 {
    if (turkic && c == u'I') return 0x131;
    if (turkic && c == 0x130) return u'i';
    return u_tolower(c);
  });
}

}  // namespace tsruntime
