// SPDX-License-Identifier: Apache-2.0
// What a call of SetTimer and of ClearTimer takes while other timers are pending. Each call waits for the timer thread,
// so even the cheapest takes two switches of threads.
#include <deque>
#include <random>

#include <benchmark/benchmark.h>

#include "BenchKernel.h"
#include "TimeOne.h"

namespace {

constexpr int64_t kSecond = 1000000000;
constexpr int64_t kHour = 3600 * kSecond;
constexpr int kCalls = 5000;

enum class Which { kOldest, kNewest, kRandom };

/// Timers that were set one after the other and fire in that order, a second apart, long after the measurement.
class PendingTimers {
 public:
  explicit PendingTimers(int64_t count) : m_queue(m_kernel), m_start(m_kernel.Now() + kHour) {
    for (int64_t i = 0; i < count; ++i) {
      Add();
    }
  }
  ~PendingTimers() {
    while (!m_timers.empty()) {
      Clear(Take(Which::kNewest));
    }
  }
  PendingTimers(const PendingTimers&) = delete;
  PendingTimers& operator=(const PendingTimers&) = delete;

  /// Sets one more timer, which fires after all others.
  void Add() { m_timers.push_back(Set(DelayTo(++m_last))); }

  /// Takes one timer off the books; it is still to be cleared.
  unsigned long Take(Which which) {
    if (which == Which::kRandom) {
      std::swap(m_timers[m_random() % m_timers.size()], m_timers.back());
    }
    const unsigned long timer = which == Which::kOldest ? m_timers.front() : m_timers.back();
    which == Which::kOldest ? m_timers.pop_front() : m_timers.pop_back();
    return timer;
  }

  int64_t RandomDelay() { return DelayTo(static_cast<int64_t>(m_random() % m_timers.size())); }
  unsigned long Set(int64_t delay) { return m_kernel->SetTimer(delay, m_queue.Get(), false); }
  void Clear(unsigned long timer) { m_kernel->ClearTimer(timer, m_queue.Get()); }

 private:
  int64_t DelayTo(int64_t place) const { return m_start + place * kSecond - m_kernel.Now(); }

  RunningKernel m_kernel;
  TimerQueue m_queue;
  const int64_t m_start;
  int64_t m_last = 0;
  std::deque<unsigned long> m_timers;
  std::mt19937 m_random{1};
};

void SetTimer(benchmark::State& state) {
  PendingTimers timers(state.range(0));
  while (state.KeepRunning()) {
    const int64_t delay = timers.RandomDelay();
    unsigned long timer = 0;
    TimeOne(state, [&] { timer = timers.Set(delay); });
    timers.Clear(timer);
  }
  state.SetComplexityN(state.range(0));
}

void ClearTimer(benchmark::State& state, Which which) {
  PendingTimers timers(state.range(0));
  while (state.KeepRunning()) {
    const unsigned long timer = timers.Take(which);
    TimeOne(state, [&] { timers.Clear(timer); });
    timers.Add();
  }
  state.SetComplexityN(state.range(0));
}

// The number of calls is fixed, since each call of these functions sets all timers first.
void Configure(benchmark::internal::Benchmark* bench) {
  bench->RangeMultiplier(10)->Range(10, 100000)->Iterations(kCalls)->UseManualTime()->Complexity();
  bench->Unit(benchmark::kMicrosecond);
}

BENCHMARK(SetTimer)->Apply(Configure);
BENCHMARK_CAPTURE(ClearTimer, newest, Which::kNewest)->Apply(Configure);
BENCHMARK_CAPTURE(ClearTimer, random, Which::kRandom)->Apply(Configure);
BENCHMARK_CAPTURE(ClearTimer, oldest, Which::kOldest)->Apply(Configure);

}  // namespace
