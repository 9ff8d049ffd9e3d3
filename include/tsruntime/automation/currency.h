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
  // Rounds value × 10,000 to a whole number, halves to even, as the host runtime does
  // (so 0.12345 gives 0.1234, while 0.00015, a shade below the half as a double, gives
  // 0.0001); whole amounts stay exact up to the limit. Raises overflow (6) outside
  // ±922,337,203,685,477.5807 or for NaN.
  static Currency FromDouble(double value);

  double ToDouble() const { return static_cast<double>(raw) / 10000.0; }

  friend constexpr auto operator<=>(Currency, Currency) = default;
};

}  // namespace tsruntime
