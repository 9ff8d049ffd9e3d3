// Whole-number arithmetic as the host runtime does it: a result that does not fit its
// type is the runtime's overflow error (6), never a wrapped value.
#pragma once

#include <cstdint>

#include "tsruntime/automation/error.h"

namespace tsruntime {

template <class T>
T CheckedAdd(T a, T b) {
  T r;
  if (__builtin_add_overflow(a, b, &r)) RaiseRuntime(RuntimeError::kOverflow);
  return r;
}

template <class T>
T CheckedMul(T a, T b) {
  T r;
  if (__builtin_mul_overflow(a, b, &r)) RaiseRuntime(RuntimeError::kOverflow);
  return r;
}

// A position or count as a Long.
inline int32_t CheckedLong(int64_t value) {
  if (value < INT32_MIN || value > INT32_MAX) RaiseRuntime(RuntimeError::kOverflow);
  return static_cast<int32_t>(value);
}

}  // namespace tsruntime
