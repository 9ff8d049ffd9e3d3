// Decimal: the host runtime's 96-bit scaled integer (type code 14).
//
// Held as a sign, a 96-bit magnitude and a power-of-ten scale of 0 to 28. The library
// only stores, converts and compares decimals; it does no decimal arithmetic.
#pragma once

#include <cstdint>
#include <optional>

#include "tsruntime/automation/string.h"

namespace tsruntime {

struct Decimal {
  unsigned __int128 magnitude = 0;  // below 2^96
  uint8_t scale = 0;                // digits after the decimal point, 0..28
  bool negative = false;

  // Fifteen significant digits, as the host runtime converts a double; raises
  // overflow (6) beyond the decimal range.
  static Decimal FromDouble(double value);
  static Decimal FromInteger(int64_t value);
  double ToDouble() const;
  // Plain digits with '.' as the decimal point and no exponent ("-12.5").
  std::string ToPlainText() const;
  // Parses what `ToPlainText` writes (a '.' point, an optional sign).
  static std::optional<Decimal> ParsePlain(std::string_view text);

  // -1, 0 or +1.
  static int Compare(const Decimal& a, const Decimal& b);
};

}  // namespace tsruntime
