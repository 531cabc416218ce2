// SPDX-License-Identifier: Apache-2.0
// What a pass of the timer thread takes that fires many timers at once.
//
// A timer that becomes due by itself is late by what the system needs to wake a thread, far more than a short pass
// takes. So these are timers of GMT, and SetTimeGMT makes them due. It returns when the timer thread has taken the
// request, just before the pass; the next request is taken behind the pass. Two calls in a row thus last as long as the
// pass and two switches there and back.
#include <random>

#include <benchmark/benchmark.h>

#include "BenchKernel.h"
#include "TimeOne.h"

namespace {

constexpr int64_t kHour = int64_t{3600} * 1000000000;
constexpr int64_t kStart = int64_t{50} * 365 * 24 * kHour;  // a date, and no time of day

/// A kernel whose GMT is moved by hand, and the queue of its timers.
class GmtTimers {
 public:
  GmtTimers() : m_queue(m_kernel) { Advance(0); }
  GmtTimers(const GmtTimers&) = delete;
  GmtTimers& operator=(const GmtTimers&) = delete;

  /// Sets a timer that is due when GMT was advanced by this much.
  void Set(int64_t distance, int64_t period) { m_kernel->SetTimerGMT(m_now + distance, m_queue.Get(), period); }

  void Advance(int64_t step) {
    m_now += step;
    m_kernel->SetTimeGMT(m_now);
  }
  void WaitForPass() { m_kernel->SetTimeGMT(m_now); }
  void Receive(int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
      m_queue.Receive();
    }
  }
  unsigned long DiscardAll() { return m_queue.DiscardAll(); }

 private:
  RunningKernel m_kernel;
  TimerQueue m_queue;
  int64_t m_now = kStart;
};

// Times one pass and the number of messages that it has to post.
void TimePass(benchmark::State& state, GmtTimers& timers, int64_t step, int64_t expected) {
  TimeOne(state, [&] {
    timers.Advance(step);
    timers.WaitForPass();
  });
  if (timers.DiscardAll() != static_cast<unsigned long>(expected)) {
    state.SkipWithError("the pass posted another number of messages");
  }
}

void Finish(benchmark::State& state) {
  state.SetComplexityN(state.range(0));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void SetMany(GmtTimers& timers, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    timers.Set(kHour, 0);
  }
}

// All N fire and are done.
void FireOneShots(benchmark::State& state) {
  GmtTimers timers;
  while (state.KeepRunning()) {
    SetMany(timers, state.range(0));
    TimePass(state, timers, 2 * kHour, state.range(0));
  }
  Finish(state);
}

// From the change of the clock until the client, which receives meanwhile, has the last message.
void FireAndReceive(benchmark::State& state) {
  GmtTimers timers;
  while (state.KeepRunning()) {
    SetMany(timers, state.range(0));
    TimeOne(state, [&] {
      timers.Advance(2 * kHour);
      timers.Receive(state.range(0));
    });
  }
  Finish(state);
}

// The client's part alone, when it begins after the pass: N messages wait in its queue.
void ReceiveWaiting(benchmark::State& state) {
  GmtTimers timers;
  while (state.KeepRunning()) {
    SetMany(timers, state.range(0));
    timers.Advance(2 * kHour);
    timers.WaitForPass();
    TimeOne(state, [&] { timers.Receive(state.range(0)); });
  }
  Finish(state);
}

// All N fire and go back into the list in another order.
void RearmAll(benchmark::State& state) {
  GmtTimers timers;
  std::mt19937_64 random(1);
  for (int64_t i = 0; i < state.range(0); ++i) {
    timers.Set(kHour, kHour + static_cast<int64_t>(random() % kHour));
  }
  while (state.KeepRunning()) {
    TimePass(state, timers, 3 * kHour, state.range(0));
  }
  Finish(state);
}

// One of N fires and goes from the front of the list to its end. Its period is a little short of a full turn, since it
// counts from the pass, which is a little late.
void RearmOne(benchmark::State& state) {
  GmtTimers timers;
  for (int64_t i = 0; i < state.range(0); ++i) {
    timers.Set(i * kHour + kHour / 2, state.range(0) * kHour - kHour / 100000);
  }
  while (state.KeepRunning()) {
    TimePass(state, timers, kHour, 1);
  }
  state.SetComplexityN(state.range(0));
}

// Little time, since setting the timers anew takes much more than the pass.
void Configure(benchmark::internal::Benchmark* bench) {
  bench->RangeMultiplier(10)->Range(10, 100000)->MinTime(0.05)->UseManualTime()->Complexity();
  bench->Unit(benchmark::kMicrosecond);
}

BENCHMARK(FireOneShots)->Apply(Configure);
BENCHMARK(FireAndReceive)->Apply(Configure);
BENCHMARK(ReceiveWaiting)->Apply(Configure);
BENCHMARK(RearmAll)->Apply(Configure);
BENCHMARK(RearmOne)->Apply(Configure);

}  // namespace
