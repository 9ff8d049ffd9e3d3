#include "terminal_text.h"

#include <langinfo.h>
#include <locale.h>
#include <unicode/ucnv.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace tsruntime {
namespace {

// The locale name the environment gives for character types.
std::string EnvironmentLocaleName() {
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value && *value) return value;
  }
  return "C";
}

// The environment's character set, read without touching the process's own locale.
// A name that spells its set ("ru_RU.KOI8-R@mod") gives it directly; only a bare name
// needs the locale loaded.
std::string EnvironmentCodeset() {
  const std::string name = EnvironmentLocaleName();
  std::string codeset;
  if (const size_t dot = name.find('.'); dot != std::string::npos) {
    codeset = name.substr(dot + 1, name.find('@', dot) - dot - 1);
  } else if (name != "C" && name != "POSIX") {
    if (locale_t env = newlocale(LC_CTYPE_MASK, name.c_str(), nullptr)) {
      codeset = nl_langinfo_l(CODESET, env);
      freelocale(env);
    }
  }
  if (codeset.empty() || codeset == "ANSI_X3.4-1968" || codeset == "ASCII") return "UTF-8";
  return codeset;
}

struct ConverterClose {
  void operator()(UConverter* c) const { ucnv_close(c); }
};

}  // namespace

std::string TerminalBytes(StringView text) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UConverter, ConverterClose> converter(
      ucnv_open(EnvironmentCodeset().c_str(), &status));
  if (U_FAILURE(status)) return ToUtf8(text);
  ucnv_setSubstChars(converter.get(), "?", 1, &status);
  const int32_t length = static_cast<int32_t>(text.size());
  status = U_ZERO_ERROR;
  const int32_t needed = ucnv_fromUChars(converter.get(), nullptr, 0, text.data(), length, &status);
  std::string out(static_cast<size_t>(needed), '\0');
  status = U_ZERO_ERROR;
  ucnv_fromUChars(converter.get(), out.data(), needed, text.data(), length, &status);
  if (U_FAILURE(status) && status != U_STRING_NOT_TERMINATED_WARNING) return ToUtf8(text);
  return out;
}

void WriteToTerminal(std::FILE* stream, StringView text) {
  const std::string bytes = TerminalBytes(text);
  std::fwrite(bytes.data(), 1, bytes.size(), stream);
  std::fflush(stream);
}

}  // namespace tsruntime
