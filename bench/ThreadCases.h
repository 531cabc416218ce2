// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_THREADCASES_H
#define IPL_BENCH_THREADCASES_H

#include <semaphore.h>

#include <chrono>
#include <thread>

#include "Bench.h"

/// What a measured thread does: it tells that it is at its end.
struct ThreadEnd {
  ThreadEnd() { ::sem_init(&m_semaphore, 0, 0); }
  ~ThreadEnd() { ::sem_destroy(&m_semaphore); }
  ThreadEnd(const ThreadEnd&) = delete;
  ThreadEnd& operator=(const ThreadEnd&) = delete;

  void Tell() { ::sem_post(&m_semaphore); }
  void Wait() { ::sem_wait(&m_semaphore); }

 private:
  sem_t m_semaphore;
};

constexpr auto kUntilGone = std::chrono::microseconds(20);

/// A class with Start(ThreadEnd*), which makes a thread that tells its end, and Join(), which is not timed.
template <typename Thread>
void RunToEnd(State& state) {
  const OneProcessor one;
  ThreadEnd end;
  Thread thread;
  while (state.KeepRunning()) {
    TimeOne(state, [&] {
      thread.Start(&end);
      end.Wait();
    });
    thread.Join();
    std::this_thread::sleep_for(kUntilGone);  // those that nobody joins leave the process too
  }
}

template <typename Thread>
void MeasureThread(const std::string& who) {
  MeasureManually("RunToEnd/" + who, 500, RunToEnd<Thread>);
}

#endif  // IPL_BENCH_THREADCASES_H
