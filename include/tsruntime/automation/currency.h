// Currency: a signed 64-bit count of ten-thousandths (four fixed decimals).
#pragma once

#include <compare>
#include <cstdint>

namespace tsruntime {

struct Currency {
  int64_t raw = 0;  // amount × 10,000

  static constexpr Currency FromRaw(int64_t raw) { return Currency{raw}; }
  // Whole units; raises overflow (6) outside the currency range.
  static Currency FromUnits(int64_t units);
  // Rounds to four decimals, halves to even, as the host runtime does;
  // raises overflow (6) outside ±922,337,203,685,477.5807 or for NaN.
  static Currency FromDouble(double value);

  double ToDouble() const { return static_cast<double>(raw) / 10000.0; }

  friend constexpr auto operator<=>(Currency, Currency) = default;
};

}  // namespace tsruntime
