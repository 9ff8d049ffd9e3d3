// Values and helpers shared by the tsrt tests.
#pragma once

#include <string>
#include <vector>

#include "tsruntime/automation/variant.h"

namespace tsrt_test {

using tsruntime::Bounds;
using tsruntime::Currency;
using tsruntime::Date;
using tsruntime::DateParts;
using tsruntime::Decimal;
using tsruntime::ErrorValue;
using tsruntime::SafeArray;
using tsruntime::String;
using tsruntime::Variant;
using tsruntime::VarType;

inline Variant Text(const char16_t* s) { return Variant(String(s)); }

inline Variant DateOf(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Variant(Date::FromParts(DateParts{y, mo, d, h, mi, s}));
}

inline Variant DecimalOf(const char* text) { return Variant(Decimal::ParsePlain(text).value()); }

// An array of `element` with `dims`, holding `items` in storage order.
inline Variant MakeArray(VarType element, std::vector<Bounds> dims, std::vector<Variant> items) {
  SafeArray a(element, std::move(dims));
  for (size_t k = 0; k < items.size(); ++k) {
    if (element == VarType::kByte) {
      a.bytes()[k] = items[k].asByte();
    } else {
      a.elements()[k] = items[k];
    }
  }
  return Variant(std::move(a));
}

// A command line as "[call] [clsX] [Member]", for failure messages.
inline std::string Joined(const std::vector<std::string>& words) {
  std::string s;
  for (const std::string& w : words) s += (s.empty() ? "" : " ") + ("[" + w + "]");
  return s;
}

}  // namespace tsrt_test
