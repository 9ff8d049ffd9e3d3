// Building and reading the string lists and (column, row) tables the array tests use.
#pragma once

#include <string>
#include <vector>

#include "tsruntime/automation/safearray.h"

namespace tsruntime::testing {

// A table with `rows` given row by row; columns from `column_lower`, rows from
// `row_lower`.
inline SafeArray Table(const std::vector<std::vector<String>>& rows, int32_t column_lower = 0,
                       int32_t row_lower = 0) {
  const int32_t width = rows.empty() ? 0 : static_cast<int32_t>(rows[0].size());
  SafeArray t(VarType::kString,
              {Bounds{column_lower, column_lower + width - 1},
               Bounds{row_lower, row_lower + static_cast<int32_t>(rows.size()) - 1}});
  for (size_t r = 0; r < rows.size(); ++r) {
    for (int32_t c = 0; c < width; ++c) {
      t.set(column_lower + c, row_lower + static_cast<int32_t>(r), Variant(rows[r][c]));
    }
  }
  return t;
}

// One column of a table, top to bottom.
inline std::vector<String> Column(const SafeArray& table, int32_t column) {
  std::vector<String> out;
  for (int32_t r = table.lbound(2); r <= table.ubound(2); ++r) {
    out.push_back(table.get(column, r).asString());
  }
  return out;
}

// UTF-8 text of a list of strings, for failure messages.
inline std::string Show(const std::vector<String>& items) {
  std::string out;
  for (const String& s : items) out += (out.empty() ? "" : " ") + ToUtf8(s);
  return "[" + out + "]";
}

}  // namespace tsruntime::testing
