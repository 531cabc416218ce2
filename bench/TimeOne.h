// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_TIMEONE_H
#define IPL_BENCH_TIMEONE_H

#include <chrono>

#include <benchmark/benchmark.h>

/// Times one iteration: only the call. What prepares it, or restores the number of pending timers, goes on beside.
template <typename Call>
void TimeOne(benchmark::State& state, Call call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

#endif  // IPL_BENCH_TIMEONE_H
