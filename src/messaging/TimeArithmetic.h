// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MESSAGING_TIMEARITHMETIC_H
#define IPL_MESSAGING_TIMEARITHMETIC_H

#include <stdint.h>

#include <ipl/IPLKernel.h>

/// Arithmetic on instants that stays at the ends of the range instead of overflowing.

inline IPLKernel::Time SaturatingAdd(IPLKernel::Time left, IPLKernel::Time right) {
  int64_t sum = 0;
  if (__builtin_add_overflow(left.GetNanoseconds(), right.GetNanoseconds(), &sum)) {
    return right.GetNanoseconds() > 0 ? INT64_MAX : INT64_MIN;
  }
  return sum;
}

inline IPLKernel::Time SaturatingSubtract(IPLKernel::Time left, IPLKernel::Time right) {
  int64_t difference = 0;
  if (__builtin_sub_overflow(left.GetNanoseconds(), right.GetNanoseconds(), &difference)) {
    return right.GetNanoseconds() < 0 ? INT64_MAX : INT64_MIN;
  }
  return difference;
}

/// Returns the instant of a count of whole seconds.
inline IPLKernel::Time SaturatingSeconds(int64_t seconds) {
  int64_t nanoseconds = 0;
  if (__builtin_mul_overflow(seconds, static_cast<int64_t>(1000000000), &nanoseconds)) {
    return seconds > 0 ? INT64_MAX : INT64_MIN;
  }
  return nanoseconds;
}

#endif  // IPL_MESSAGING_TIMEARITHMETIC_H
