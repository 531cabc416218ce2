// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNELTIME_H
#define IPL_KERNELTIME_H

#include <stdint.h>

#include <chrono>
#include <ratio>
#include <type_traits>

#include <ipl/IPLKernel.h>

/// @file
/// Times from and to std::chrono.

/// Between durations of std::chrono and IPLKernel::Time. Both ways round up, towards the later instant, so that no wait
/// ends early, and stop at the ends of the range. They take no lock and store no error. [any thread]
namespace ipl {

/// Returns magnitude * numerator / denominator, at most limit. Fractions are rounded up, or down.
/// numerator * denominator: at most INT64_MAX.
IPL_ALWAYS_INLINE uint64_t ScaleCount(uint64_t magnitude, uint64_t numerator, uint64_t denominator, bool up,
                                      uint64_t limit) {
  const uint64_t whole = magnitude / denominator;
  const uint64_t rest = magnitude % denominator * numerator;
  const uint64_t part = rest / denominator + (up && rest % denominator != 0 ? 1 : 0);
  return part > limit || whole > (limit - part) / numerator ? limit : whole * numerator + part;
}

/// Converts a count of numerator / denominator nanoseconds each to nanoseconds, for whole numbers.
template <typename Rep>
IPL_ALWAYS_INLINE int64_t NanosecondsOf(Rep count, uint64_t numerator, uint64_t denominator, std::false_type) {
  static_assert(sizeof(Rep) <= sizeof(int64_t), "a count of a duration has at most 64 bits");
  if (count < Rep(0)) {
    const uint64_t lowest = static_cast<uint64_t>(INT64_MAX) + 1;
    const uint64_t magnitude = 0 - static_cast<uint64_t>(count);
    return static_cast<int64_t>(0 - ScaleCount(magnitude, numerator, denominator, false, lowest));
  }
  return static_cast<int64_t>(ScaleCount(static_cast<uint64_t>(count), numerator, denominator, true, INT64_MAX));
}

/// The same for floating-point numbers, computed as double. Not a number counts as 0.
template <typename Rep>
IPL_ALWAYS_INLINE int64_t NanosecondsOf(Rep count, uint64_t numerator, uint64_t denominator, std::true_type) {
  const double kEnd = 9223372036854775808.0;  // 2 to the 63rd
  const double value = static_cast<double>(count) * static_cast<double>(numerator) / static_cast<double>(denominator);
  if (!(value > -kEnd)) {
    return value <= -kEnd ? INT64_MIN : 0;
  }
  if (value >= kEnd) {
    return INT64_MAX;
  }
  const int64_t truncated = static_cast<int64_t>(value);
  return static_cast<double>(truncated) < value ? truncated + 1 : truncated;
}

/// Converts a duration; its sign stays. A fraction of a nanosecond is rounded up: 1 ps gives 1 ns, -1 ps gives 0. What
/// lies beyond the range gives the end of the range, which at the top is Time::Forever(); so does duration's max().
template <typename Rep, typename Period>
IPL_ALWAYS_INLINE IPLKernel::Time ToKernelTime(const std::chrono::duration<Rep, Period>& duration) {
  typedef std::ratio_divide<Period, std::nano> Unit;
  static_assert(Unit::num <= INT64_MAX / Unit::den, "the unit of the duration is too odd");
  if (duration == (std::chrono::duration<Rep, Period>::max)()) {
    return IPLKernel::Time::Forever();
  }
  return IPLKernel::Time(NanosecondsOf(duration.count(), static_cast<uint64_t>(Unit::num),
                                       static_cast<uint64_t>(Unit::den), std::chrono::treat_as_floating_point<Rep>()));
}

/// Converts a duration to a time-out for a wait. As ToKernelTime, but a negative duration gives 0, which polls: as a
/// time-out the kernel takes most negative times for a wait without end.
template <typename Rep, typename Period>
IPL_ALWAYS_INLINE IPLKernel::Time ToTimeout(const std::chrono::duration<Rep, Period>& duration) {
  const IPLKernel::Time time = ToKernelTime(duration);
  return time < IPLKernel::Time(0) ? IPLKernel::Time(0) : time;
}

/// Converts a time to a Duration whose count is a whole number: std::chrono::milliseconds, for example. Fractions are
/// rounded up: 1 ns gives 1 ms, -1 ns gives 0. Time::Forever() gives Duration::max(), and so does what lies beyond it;
/// what lies below Duration::min() gives that.
template <typename Duration>
IPL_ALWAYS_INLINE Duration FromKernelTime(IPLKernel::Time time) {
  typedef typename Duration::rep Rep;
  typedef std::ratio_divide<std::nano, typename Duration::period> Unit;
  static_assert(std::is_integral<Rep>::value && sizeof(Rep) <= sizeof(int64_t), "the count has to be a whole number");
  static_assert(Unit::num <= INT64_MAX / Unit::den, "the unit of the duration is too odd");
  const uint64_t numerator = static_cast<uint64_t>(Unit::num);
  const uint64_t denominator = static_cast<uint64_t>(Unit::den);
  if (time == IPLKernel::Time::Forever()) {
    return (Duration::max)();
  }
  if (time < IPLKernel::Time(0)) {
    const uint64_t lowest = 0 - static_cast<uint64_t>((Duration::min)().count());
    const uint64_t magnitude = 0 - static_cast<uint64_t>(time.GetNanoseconds());
    const uint64_t result = ScaleCount(magnitude, numerator, denominator, false, lowest);
    return Duration(static_cast<Rep>(static_cast<int64_t>(0 - result)));
  }
  return Duration(static_cast<Rep>(ScaleCount(static_cast<uint64_t>(time.GetNanoseconds()), numerator, denominator,
                                              true, static_cast<uint64_t>((Duration::max)().count()))));
}

}  // namespace ipl

#endif  // IPL_KERNELTIME_H
