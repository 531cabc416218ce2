// SPDX-License-Identifier: Apache-2.0
// What SetTimer and ClearTimer take while other timers are pending; their limit is one Send round trip, since both wait
// for the timer thread. How late timers of 5 ms are.
#include <time.h>

#include <deque>
#include <random>
#include <vector>

#include "Bench.h"
#include "TimerQueue.h"

namespace {

constexpr int64_t kMillisecond = 1000000;
constexpr int64_t kSecond = 1000 * kMillisecond;
constexpr int64_t kHour = 3600 * kSecond;

enum class Which { kOldest, kNewest, kRandom };

/// Timers that fire one after the other, a second apart, long after the measurement. The kernel drops those that are
/// still pending when it goes.
class PendingTimers {
 public:
  explicit PendingTimers(int64_t count) : m_queue(m_kernel), m_start(m_kernel.Now() + kHour), m_last(count) {
    m_timers.resize(static_cast<size_t>(count));
    SetTogether(count, [this](int64_t place) { m_timers[static_cast<size_t>(place)] = Set(DelayTo(place)); });
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
  TimerQueue& GetQueue() { return m_queue; }

 private:
  int64_t DelayTo(int64_t place) const { return m_start + place * kSecond - m_kernel.Now(); }

  RunningKernel m_kernel;
  TimerQueue m_queue;
  const int64_t m_start;
  int64_t m_last;
  std::deque<unsigned long> m_timers;
  std::mt19937 m_random{1};
};

void SetTimer(State& state) {
  const OneProcessor one;
  PendingTimers timers(state.range(0));
  while (state.KeepRunning()) {
    const int64_t delay = timers.RandomDelay();
    unsigned long timer = 0;
    TimeOne(state, [&] { timer = timers.Set(delay); });
    timers.Clear(timer);
  }
}

template <Which kWhich>
void ClearTimer(State& state) {
  const OneProcessor one;
  PendingTimers timers(state.range(0));
  while (state.KeepRunning()) {
    const unsigned long timer = timers.Take(kWhich);
    TimeOne(state, [&] { timers.Clear(timer); });
    timers.Add();
  }
}

void RoundTrip(State& state) {
  const OneProcessor one;
  const RunningKernel kernel;
  Replier replier(kernel);
  while (state.KeepRunning()) {
    TimeOne(state, [&] { replier.RoundTrip(); });
  }
}

template <typename Wait>
void Lateness(State& state, Wait wait) {
  TakeMiddle(state, 41, [&] {
    const int64_t lateness = wait();
    if (lateness < 0) {
      state.SkipWithError("early");
    }
    return static_cast<double>(lateness) / 1e9;
  });
}

int64_t MonotonicNow() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

void BareLateness(State& state) {
  Lateness(state, [] {
    const int64_t due = MonotonicNow() + 5 * kMillisecond;
    const timespec instant = {due / kSecond, due % kSecond};
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &instant, nullptr) != 0) {
    }
    return MonotonicNow() - due;
  });
}

// Until the pass that fires the timer.
void TimerLateness(State& state) {
  PendingTimers timers(0);
  Lateness(state, [&] {
    const int64_t due = MonotonicNow() + 5 * kMillisecond;
    timers.Set(5 * kMillisecond);
    return timers.GetQueue().Receive() - due;
  });
}

// Until the client has the message: one more thread to wake.
void ReceivedLateness(State& state) {
  PendingTimers timers(0);
  Lateness(state, [&] {
    const int64_t due = MonotonicNow() + 5 * kMillisecond;
    timers.Set(5 * kMillisecond);
    timers.GetQueue().Receive();
    return MonotonicNow() - due;
  });
}

void MeasureCalls(const std::string& name, void (*function)(State&)) {
  MeasureManually(name, 300, function)->RangeMultiplier(10)->Range(10, 100000);
}

const Registered s_registered([] {
  MeasureCalls("SetTimer/ours", SetTimer);
  MeasureCalls("ClearTimer.newest/ours", ClearTimer<Which::kNewest>);
  MeasureCalls("ClearTimer.random/ours", ClearTimer<Which::kRandom>);
  MeasureCalls("ClearTimer.oldest/ours", ClearTimer<Which::kOldest>);
  for (const char* name :
       {"SetTimer/limit", "ClearTimer.newest/limit", "ClearTimer.random/limit", "ClearTimer.oldest/limit"}) {
    MeasureManually(name, 300, RoundTrip);
  }
  MeasureManually("Lateness5ms/ours", 1, TimerLateness);
  MeasureManually("Lateness5ms/limit", 1, BareLateness);
  MeasureManually("Lateness5ms.received/ours", 1, ReceivedLateness);
  MeasureManually("Lateness5ms.received/limit", 1, BareLateness);
});

}  // namespace
