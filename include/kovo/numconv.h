// Conversions of doubles to integers with the machine's defined result where
// the value does not fit: NaN and out-of-range values give the "integer
// indefinite" value (the lowest one), as the processor's truncating
// conversion does.
#pragma once

#include <cmath>
#include <cstdint>

inline int32_t truncToInt32(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(value);
}

inline int64_t truncToInt64(double value) {
  if (!(value >= -9223372036854775808.0 && value < 9223372036854775808.0)) return INT64_MIN;
  return static_cast<int64_t>(value);
}
