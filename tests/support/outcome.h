// Test helpers: a call's result or the error it raised, as one comparable text.
//
// Table rows then read as sentences: {"Integer 40000", Variant(40000), "error 6"}.
#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <functional>
#include <string>
#include <type_traits>

#include "tsruntime/automation/error.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::testing {

inline std::string U8(StringView text) { return ToUtf8(text); }

// The shortest text that reads back as `value` ("1.5", "0.015", "-1").
inline std::string Num(double value) {
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, r.ptr);
}

// What `body` returns as text ("" when it returns nothing), or "error N" when it raises.
template <class F>
std::string Outcome(F&& body) {
  try {
    if constexpr (std::is_void_v<std::invoke_result_t<F&>>) {
      body();
      return "";
    } else {
      return std::string(body());
    }
  } catch (const Error& e) {
    return "error " + std::to_string(e.number());
  }
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

}  // namespace tsruntime::testing
