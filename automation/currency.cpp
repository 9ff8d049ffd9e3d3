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
  if (std::isnan(value)) RaiseRuntime(RuntimeError::kOverflow);
  if (std::fabs(value * 10000.0) >= 9007199254740992.0) {
    // Past 2^53 the double product has lost the units: a whole 922337203685477 would
    // come out as ...476.9664. The wider product keeps large amounts exact.
    const long double wide = std::nearbyint(static_cast<long double>(value) * 10000.0L);
    if (!(wide >= -9223372036854775808.0L && wide < 9223372036854775808.0L)) {
      RaiseRuntime(RuntimeError::kOverflow);
    }
    return Currency{static_cast<int64_t>(wide)};
  }
  const double scaled = RoundHalfEven(value * 10000.0);
  // 2^63 is exactly representable; anything at or beyond it (or NaN) cannot be held.
  if (!(scaled >= -9223372036854775808.0 && scaled < 9223372036854775808.0)) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  return Currency{static_cast<int64_t>(scaled)};
}

}  // namespace tsruntime
