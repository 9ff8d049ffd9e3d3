// Shared by the text tests: error checks, late-bound calls, amounts and (column, row) tables.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "containers/support.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/errors.h"

namespace tsruntime::testing {

// Runs `call`, which must raise; checks every field of the error, no help topic included.
template <class F>
void ExpectError(F&& call, int32_t number, StringView source, StringView description,
                 const std::string& what) {
  EXPECT_EQ(container_tests::ErrorOf(call),
            container_tests::ErrorFields(number, String(source), String(description), u"", 0))
      << what;
}

// The host runtime's own error `code`, passed through unchanged.
template <class F>
void ExpectRuntimeError(F&& call, RuntimeError code, const std::string& what) {
  const auto number = static_cast<int32_t>(code);
  ExpectError(call, number, FromAscii(kRuntimeErrorSource), RuntimeErrorText(number), what);
}

inline Variant Call(const Ref<Object>& object, StringView member, std::vector<Argument>& args) {
  return Invoke(*object, member, InvokeKind::kCall, args);
}

// An amount written as in the host language ("-1234.5678"), exactly.
inline Currency Amount(std::string text) {
  const bool negative = text[0] == '-';
  if (text.find('.') == std::string::npos) text += '.';
  text.append(4 - (text.size() - text.find('.') - 1), '0').erase(text.find('.'), 1);
  const uint64_t raw = std::stoull(text.substr(negative));
  return Currency::FromRaw(static_cast<int64_t>(negative ? 0 - raw : raw));
}

// The words of `text` (UTF-8, separated by spaces) as strings.
inline std::vector<String> Words(const std::string& text) {
  std::istringstream in(text);
  std::vector<String> out;
  for (std::string word; in >> word;) out.push_back(FromUtf8(word));
  return out;
}

// A table holding `rows`, columns from `column_lower`, rows from `row_lower`.
inline SafeArray Table(const std::vector<std::vector<String>>& rows, int32_t column_lower = 0,
                       int32_t row_lower = 0) {
  const auto width = static_cast<int32_t>(rows[0].size()), n = static_cast<int32_t>(rows.size());
  SafeArray t(VarType::kString, {Bounds{column_lower, column_lower + width - 1},
                                 Bounds{row_lower, row_lower + n - 1}});
  for (int32_t i = 0; i < n * width; ++i) {
    t.set(column_lower + i % width, row_lower + i / width, Variant(rows[i / width][i % width]));
  }
  return t;
}

inline std::vector<String> Column(const SafeArray& table, int32_t column) {
  std::vector<String> out;
  for (int32_t r = table.lbound(2); r <= table.ubound(2); ++r) {
    out.push_back(table.get(column, r).asString());
  }
  return out;
}

}  // namespace tsruntime::testing
