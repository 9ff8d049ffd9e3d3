#include "tsruntime/automation/val.h"

#include <charconv>
#include <cstdint>
#include <string>

#include "tsruntime/automation/error.h"

namespace tsruntime {
namespace {

bool Skipped(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n'; }

int DigitValue(char16_t c, int radix) {
  int d = -1;
  if (c >= u'0' && c <= u'9') d = c - u'0';
  else if (c >= u'a' && c <= u'f') d = c - u'a' + 10;
  else if (c >= u'A' && c <= u'F') d = c - u'A' + 10;
  return d < radix ? d : -1;
}

// "&H"/"&O" numbers wrap into the smallest signed type their digit count allows.
double RadixValue(const std::u16string& digits, int radix) {
  const size_t short_digits = radix == 16 ? 4 : 6;
  const size_t long_digits = radix == 16 ? 8 : 11;
  uint64_t value = 0;
  size_t count = 0;
  for (char16_t c : digits) {
    const int d = DigitValue(c, radix);
    if (d < 0) break;
    if (count == 0 && d == 0) continue;  // leading zeros do not count
    value = value * radix + d;
    if (++count > long_digits) RaiseRuntime(RuntimeError::kOverflow);
  }
  if (count <= short_digits && value <= 0xFFFF) return static_cast<int16_t>(value);
  if (value > 0xFFFFFFFFu) RaiseRuntime(RuntimeError::kOverflow);
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}

}  // namespace

double Val(StringView text) {
  std::u16string s;
  for (char16_t c : text)
    if (!Skipped(c)) s += c;

  if (s.size() >= 2 && s[0] == u'&') {
    if (s[1] == u'H' || s[1] == u'h') return RadixValue(s.substr(2), 16);
    if (s[1] == u'O' || s[1] == u'o') return RadixValue(s.substr(2), 8);
    if (DigitValue(s[1], 8) >= 0) return RadixValue(s.substr(1), 8);
    return 0;
  }

  // Collect the longest prefix shaped like a number, then let strtod read it.
  std::string number;
  size_t i = 0;
  auto digits = [&] {
    size_t n = 0;
    for (; i < s.size() && s[i] >= u'0' && s[i] <= u'9'; ++i, ++n) number += char(s[i]);
    return n;
  };
  if (i < s.size() && (s[i] == u'+' || s[i] == u'-')) number += char(s[i++]);
  size_t mantissa = digits();
  if (i < s.size() && s[i] == u'.') {
    number += '.';
    ++i;
    mantissa += digits();
  }
  if (mantissa == 0) return 0;
  if (i < s.size() && (s[i] == u'e' || s[i] == u'E' || s[i] == u'd' || s[i] == u'D')) {
    std::string exponent = "e";
    size_t j = i + 1;
    if (j < s.size() && (s[j] == u'+' || s[j] == u'-')) exponent += char(s[j++]);
    size_t n = 0;
    for (; j < s.size() && s[j] >= u'0' && s[j] <= u'9'; ++j, ++n) exponent += char(s[j]);
    if (n > 0) number += exponent;
  }
  // from_chars, unlike strtod, ignores the C locale's decimal separator.
  const char* first = number.c_str();
  if (*first == '+') ++first;
  double value = 0;
  const auto [rest, ec] = std::from_chars(first, number.c_str() + number.size(), value);
  if (ec == std::errc::result_out_of_range) {
    // Too large overflows; too small reads as 0. Only the exponent's sign tells them
    // apart here, since a long mantissa never leaves the range on its own.
    const size_t e = number.find('e');
    if (e == std::string::npos || number[e + 1] != '-') RaiseRuntime(RuntimeError::kOverflow);
    return 0;
  }
  return value + 0.0;  // "-0" reads as 0
}

}  // namespace tsruntime
