// Test helpers: a call's result or the error it raised, as one comparable text.
//
// Table rows then read as sentences: {"Integer 40000", Variant(40000), "error 6"}.
#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <functional>
#include <string>

#include "tsruntime/automation/error.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::testing {

inline std::string U8(StringView text) { return ToUtf8(text); }
inline String U16(std::string_view utf8) { return FromUtf8(utf8); }

// The shortest text that reads back as `value` ("1.5", "0.015", "-1").
inline std::string Num(double value) {
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, r.ptr);
}

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

// The five fields of the Error `body` raised, one per line.
template <class F>
std::string RaisedFields(F&& body) {
  try {
    body();
  } catch (const Error& e) {
    return std::to_string(e.number()) + "\n" + U8(e.source()) + "\n" + U8(e.description()) +
           "\n" + U8(e.helpFile()) + "\n" + std::to_string(e.helpContext());
  }
  return "nothing raised";
}

// One row of a table of operations: what it does, the operation, its Outcome.
struct Case {
  const char* what;
  std::function<std::string()> run;
  std::string expected;
};

inline void CheckCases(std::initializer_list<Case> cases) {
  for (const Case& c : cases) EXPECT_EQ(Outcome(c.run), c.expected) << c.what;
}

}  // namespace tsruntime::testing
