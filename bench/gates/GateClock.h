// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_GATES_GATECLOCK_H
#define IPL_BENCH_GATES_GATECLOCK_H

/// Counts how often the whole process reads a clock.
namespace GateClock {

/// By clock_gettime: kernel time, and GMT, which is made of it.
long CountTimes();

/// By gettimeofday: a wait that does not find its event set begins with it.
long CountDeadlines();

}  // namespace GateClock

#endif  // IPL_BENCH_GATES_GATECLOCK_H
