// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_LOCKCASES_H
#define IPL_BENCH_LOCKCASES_H

#include <thread>

#include "Bench.h"

/// A class with Lock and Unlock is measured as a recursive mutex, one with Set and Wait as an event that a wait clears.

template <typename Mutex>
void LockUnlock(State& state) {
  Mutex mutex;
  Each(state, [&] {
    mutex.Lock();
    mutex.Unlock();
  });
}

template <typename Mutex>
void LockNested(State& state) {
  Mutex mutex;
  mutex.Lock();
  Each(state, [&] {
    mutex.Lock();
    mutex.Unlock();
  });
  mutex.Unlock();
}

/// Two threads that both want the mutex most of the time. The time is that of one turn.
template <typename Mutex>
void LockContended(State& state) {
  constexpr int kTurns = 100000;
  Mutex mutex;
  int64_t shared = 0;
  const auto takeTurns = [&] {
    for (int i = 0; i < kTurns; ++i) {
      mutex.Lock();
      benchmark::DoNotOptimize(++shared);
      mutex.Unlock();
    }
  };
  const auto compete = [&] {
    std::thread other(takeTurns);
    takeTurns();
    other.join();
  };
  while (state.KeepRunning()) {
    TimeOne(state, compete, 2 * kTurns);
  }
}

template <typename Event>
void SetWait(State& state) {
  Event event;
  Each(state, [&] {
    event.Set();
    event.Wait();
  });
}

template <typename Event>
void PingPong(State& state) {
  const OneProcessor one;
  Event there;
  Event back;
  bool ends = false;
  std::thread other([&] {
    for (;;) {
      there.Wait();
      if (ends) {
        return;
      }
      back.Set();
    }
  });
  while (state.KeepRunning()) {
    there.Set();
    back.Wait();
  }
  ends = true;
  there.Set();
  other.join();
}

template <typename Mutex>
void MeasureMutex(const std::string& who) {
  Measure("LockUnlock/" + who, LockUnlock<Mutex>);
  Measure("LockNested/" + who, LockNested<Mutex>);
  MeasureManually("LockContended/" + who, 5, LockContended<Mutex>);
}

template <typename Event>
void MeasureEvent(const std::string& who) {
  Measure("SetWait/" + who, SetWait<Event>);
  Measure("PingPong/" + who, PingPong<Event>);
}

#endif  // IPL_BENCH_LOCKCASES_H
