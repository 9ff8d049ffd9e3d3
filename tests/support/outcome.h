// Test helpers: a call's result or the error it raised, as one comparable text.
//
// Table rows then read as sentences: {"Integer 40000", Variant(40000), "error 6"}.
#pragma once

#include <charconv>
#include <string>

#include "tsruntime/automation/error.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::testing {

// What `body` returns (a std::string), or "error N" when it raises an Error.
template <class F>
std::string Outcome(F&& body) {
  try {
    return body();
  } catch (const Error& e) {
    return "error " + std::to_string(e.number());
  }
}

// The number of the Error `body` raised, or 0 when it raised none.
template <class F>
int32_t RaisedNumber(F&& body) {
  try {
    body();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

// The shortest text that reads back as `value` ("1.5", "0.015", "-1").
inline std::string Num(double value) {
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, r.ptr);
}

inline std::string U8(StringView text) { return ToUtf8(text); }
inline String U16(std::string_view utf8) { return FromUtf8(utf8); }

}  // namespace tsruntime::testing
