// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_BENCH_H
#define IPL_BENCH_BENCH_H

#include <sched.h>
#include <stdint.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

/// A measurement is named OPERATION/WHO or OPERATION/WHO/N: who is "ours", "limit" (the platform's own operation) or a
/// peer, N how many are pending. bench/report.py sets those of one operation side by side.
///
/// Every program keeps a second thread from its start to its end: in a process with one thread the C library leaves out
/// its atomic operations.

using State = benchmark::State;

/// Registers a measurement: DoNotOptimize and the like are up to the function.
template <typename Function>
benchmark::internal::Benchmark* Measure(const std::string& name, Function function) {
  return benchmark::RegisterBenchmark(name.c_str(), function)->UseRealTime();
}

/// Registers a measurement whose function says what an iteration takes. Fixed numbers of iterations, since what lies
/// between the iterations often takes much longer.
template <typename Function>
benchmark::internal::Benchmark* MeasureManually(const std::string& name, int64_t iterations, Function function) {
  return benchmark::RegisterBenchmark(name.c_str(), function)->UseManualTime()->Iterations(iterations);
}

/// Threads that take turns run on one processor within this scope, so that a turn is a switch there. Left alone they
/// take either of two times, depending on whether a sleeping processor has to be woken for each turn. Threads that are
/// made in the scope stay where it was.
class OneProcessor {
 public:
  OneProcessor() {
    ::sched_getaffinity(0, sizeof(m_before), &m_before);
    cpu_set_t one;
    CPU_ZERO(&one);
    const int here = ::sched_getcpu();
    CPU_SET(static_cast<size_t>(here >= 0 ? here : 0), &one);
    if (::sched_setaffinity(0, sizeof(one), &one) != 0) {
      std::fputs("This program may not choose its processor: rows of threads that take turns are not as told.\n",
                 stderr);
      std::exit(1);
    }
  }
  ~OneProcessor() { ::sched_setaffinity(0, sizeof(m_before), &m_before); }
  OneProcessor(const OneProcessor&) = delete;
  OneProcessor& operator=(const OneProcessor&) = delete;

 private:
  cpu_set_t m_before = {};
};

/// Calls again and again. The loop's own cost is spread over a block of calls.
template <typename Call>
void Each(State& state, Call call) {
  constexpr int64_t kBlock = 64;
  while (state.KeepRunningBatch(kBlock)) {
    for (int64_t i = 0; i < kBlock; ++i) {
      call();
    }
  }
}

inline double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Times the call alone, and as count operations. What prepares it, or restores what is pending, goes on beside.
template <typename Call>
void TimeOne(State& state, Call call, int64_t count = 1) {
  const auto start = std::chrono::steady_clock::now();
  call();
  state.SetIterationTime(SecondsSince(start) / static_cast<double>(count));
}

/// Times the call alone, in seconds.
template <typename Call>
double SecondsOf(Call call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return SecondsSince(start);
}

/// For what hands over between threads: measures, in seconds, so many times, and takes the middle one. One that
/// something else got in the way of may last many times as long, and would be most of a mean. With one iteration.
template <typename Case>
void TakeMiddle(State& state, size_t times, Case measure) {
  while (state.KeepRunning()) {
    std::vector<double> seconds;
    while (seconds.size() < times) {
      seconds.push_back(measure());
    }
    std::nth_element(seconds.begin(), seconds.begin() + static_cast<long>(times / 2), seconds.end());
    state.SetIterationTime(seconds[times / 2]);
  }
}

/// Stands at file scope; registers the measurements of a file before main.
struct Registered {
  template <typename Function>
  explicit Registered(Function registerAll) {
    registerAll();
  }
};

#endif  // IPL_BENCH_BENCH_H
