#include "tsruntime/automation/currency.h"

#include <cmath>

#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/error.h"

namespace tsruntime {

Currency Currency::FromUnits(int64_t units) {
  constexpr int64_t kLimit = INT64_MAX / 10000;
  if (units > kLimit || units < -kLimit) RaiseRuntime(RuntimeError::kOverflow);
  return Currency{units * 10000};
}

Currency Currency::FromDouble(double value) {
  const double scaled = RoundHalfEven(value * 10000.0);
  // 2^63 is exactly representable; anything at or beyond it (or NaN) cannot be held.
  if (!(scaled >= -9223372036854775808.0 && scaled < 9223372036854775808.0)) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  return Currency{static_cast<int64_t>(scaled)};
}

}  // namespace tsruntime
