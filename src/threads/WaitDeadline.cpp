// SPDX-License-Identifier: Apache-2.0
#include "threads/WaitDeadline.h"

#include <stdint.h>

#include <limits>

namespace {

constexpr uint64_t kNanosecondsPerSecond = 1000000000;
constexpr uint64_t kLatestSecond = static_cast<uint64_t>(std::numeric_limits<time_t>::max());

}  // namespace

WaitDeadline WaitDeadline::After(IPLKernel::Time timeout) {
  timeval now = {};
  if (timeout != IPLKernel::Time(0) && timeout != IPLKernel::Time::Forever()) {
    ::gettimeofday(&now, nullptr);
  }
  return After(timeout, now);
}

WaitDeadline WaitDeadline::After(IPLKernel::Time timeout, const timeval& now) {
  WaitDeadline deadline;
  if (timeout == IPLKernel::Time::Forever()) {
    deadline.m_forever = true;
    return deadline;
  }
  if (timeout == IPLKernel::Time(0)) {
    return deadline;
  }
  // At most 2^64 / 10^9 seconds are added to a clock of 63 bits, so the unsigned sums below do not overflow.
  const uint64_t nanoseconds =
      static_cast<uint64_t>(timeout.GetNanoseconds()) + static_cast<uint64_t>(now.tv_usec) * 1000;
  const uint64_t seconds = static_cast<uint64_t>(now.tv_sec) + nanoseconds / kNanosecondsPerSecond;
  deadline.m_instant.tv_sec = static_cast<time_t>(seconds <= kLatestSecond ? seconds : kLatestSecond);
  deadline.m_instant.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
  return deadline;
}

bool WaitDeadline::ReduceTo32Bits() {
  if (m_instant.tv_sec <= INT32_MAX) {
    return false;
  }
  m_instant.tv_sec = INT32_MAX;
  return true;
}
