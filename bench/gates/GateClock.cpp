// SPDX-License-Identifier: Apache-2.0
#include "GateClock.h"

#include <dlfcn.h>
#include <sys/time.h>
#include <time.h>

#include <atomic>

namespace {

// The headers give both functions these names where a time has 64 bits and a register 32.
#ifdef __arm__
constexpr char kTimeName[] = "__clock_gettime64";
constexpr char kDeadlineName[] = "__gettimeofday64";
#else
constexpr char kTimeName[] = "clock_gettime";
constexpr char kDeadlineName[] = "gettimeofday";
#endif

std::atomic<long> s_times{0};
std::atomic<long> s_deadlines{0};

// The C library's, which reads without a system call where it can.
template <typename Function>
Function* FindNext(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

long GateClock::CountTimes() { return s_times; }

long GateClock::CountDeadlines() { return s_deadlines; }

// In the place of the C library's.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* now) noexcept {
  static auto* const next = FindNext<int(clockid_t, timespec*)>(kTimeName);
  ++s_times;
  return next(clock, now);
}

extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* now, void* zone) noexcept {
  static auto* const next = FindNext<int(timeval*, void*)>(kDeadlineName);
  ++s_deadlines;
  return next(now, zone);
}
