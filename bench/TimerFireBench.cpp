// SPDX-License-Identifier: Apache-2.0
// What it takes to fire many timers at once.
//
// A timer that becomes due by itself is late by what the system needs to wake a thread, far more than a short pass
// takes. So these are timers of GMT, and SetTimeGMT makes them due. It returns when the timer thread has taken the
// request, just before the pass; the next request is taken behind the pass. Two calls in a row thus last as long as the
// pass and two switches there and back. The limit posts as many entries to another thread over a queue of malloc,
// mutex and condition. The time is that of one timer.
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "Bench.h"
#include "Rules.h"
#include "TimerQueue.h"

namespace {

constexpr int64_t kHour = int64_t{3600} * 1000000000;
constexpr auto kAsleep = std::chrono::milliseconds(1);      // the other thread waits by then, as the timer thread does
constexpr int64_t kStart = int64_t{50} * 365 * 24 * kHour;  // a date, and no time of day

/// A kernel whose GMT is moved by hand, and the queue of its timers.
class GmtTimers {
 public:
  GmtTimers() : m_queue(m_kernel) { Advance(0); }
  GmtTimers(const GmtTimers&) = delete;
  GmtTimers& operator=(const GmtTimers&) = delete;

  /// Sets a timer that is due when GMT was advanced by this much.
  void Set(int64_t distance, int64_t period) { m_kernel->SetTimerGMT(m_now + distance, m_queue.Get(), period); }
  void SetMany(int64_t count) {
    SetTogether(count, [this](int64_t) { Set(kHour, 0); });
  }
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

  /// Times one pass, which has to post expected messages.
  void TimePass(State& state, int64_t step, int64_t expected, int64_t count) {
    TimeOne(
        state,
        [&] {
          Advance(step);
          WaitForPass();
        },
        count);
    if (m_queue.DiscardAll() != static_cast<unsigned long>(expected)) {
      state.SkipWithError("the pass posted another number of messages");
    }
  }

 private:
  RunningKernel m_kernel;
  TimerQueue m_queue;
  int64_t m_now = kStart;
};

// All N fire and are done; their client waits until the pass is over.
void FireOneShots(State& state) {
  GmtTimers timers;
  while (state.KeepRunning()) {
    timers.SetMany(state.range(0));
    timers.TimePass(state, 2 * kHour, state.range(0), state.range(0));
  }
}

size_t TimesOf(const State& state) { return state.range(0) > 1000 ? 1 : 21; }

// From the change of the clock until the client, which receives meanwhile, has the last message.
void FireAndReceive(State& state) {
  const OneProcessor one;
  GmtTimers timers;
  const int64_t count = state.range(0);
  TakeMiddle(state, TimesOf(state), [&] {
    timers.SetMany(count);
    return SecondsOf([&] {
             timers.Advance(2 * kHour);
             timers.Receive(count);
           }) /
           static_cast<double>(count);
  });
}

void PostAndReceive(State& state) {
  const OneProcessor one;
  const int64_t count = state.range(0);
  TakeMiddle(state, TimesOf(state), [&] {
    PosixQueue queue;
    PosixQueue start;
    std::thread other([&] {
      start.Receive();
      for (int64_t i = 0; i < count; ++i) {
        queue.Post(1);
      }
    });
    std::this_thread::sleep_for(kAsleep);
    const double seconds = SecondsOf([&] {
      start.Post(1);
      for (int64_t i = 0; i < count; ++i) {
        queue.Receive();
      }
    });
    other.join();
    return seconds / static_cast<double>(count);
  });
}

// The same with what the contract asks for: who has the timers fire waits until the thread has taken that; each timer
// is freed, and its message and its data are blocks of their own, the data from a pool with a lock.
void PostAndReceiveByRules(State& state) {
  const OneProcessor one;
  const int64_t count = state.range(0);
  TakeMiddle(state, TimesOf(state), [&] {
    RulesQueue queue;
    RulesQueue start;
    RulesEvent taken;
    std::mutex pool;
    std::vector<void*> timers;
    for (int64_t i = 0; i < count; ++i) {
      timers.push_back(AllocateByRules(40));
    }
    std::thread other([&] {
      start.Receive();
      taken.Set();
      queue.Lock();
      for (void* timer : timers) {
        pool.lock();
        pool.unlock();
        queue.Post(1, AllocateByRules(40));
        FreeByRules(timer);
      }
      queue.Unlock();
    });
    std::this_thread::sleep_for(kAsleep);
    const double seconds = SecondsOf([&] {
      start.Post(1);
      taken.Wait();
      for (int64_t i = 0; i < count; ++i) {
        void* data = nullptr;
        queue.Receive(&data);
        pool.lock();
        FreeByRules(data);
        pool.unlock();
      }
    });
    other.join();
    return seconds / static_cast<double>(count);
  });
}

// All N fire and go back into the list in another order.
void RearmAll(State& state) {
  GmtTimers timers;
  SetTogether(state.range(0), [&](int64_t i) {
    timers.Set(kHour, kHour + static_cast<int64_t>(std::mt19937_64(static_cast<uint64_t>(i))() % kHour));
  });
  while (state.KeepRunning()) {
    timers.TimePass(state, 3 * kHour, state.range(0), state.range(0));
  }
}

const Registered s_registered([] {
  for (const int64_t count : {10, 100, 1000, 10000, 100000}) {
    const int64_t iterations = count > 1000 ? 1 : 10;
    MeasureManually("FireOneShots/ours", iterations, FireOneShots)->Arg(count);
    MeasureManually("FireAndReceive/ours", 1, FireAndReceive)->Arg(count);
    MeasureManually("FireAndReceive/limit", 1, PostAndReceive)->Arg(count);
    MeasureManually("FireAndReceive/rules", 1, PostAndReceiveByRules)->Arg(count);
    MeasureManually("RearmAll/ours", iterations, RearmAll)->Arg(count);
  }
});

}  // namespace
