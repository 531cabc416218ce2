// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_THREADCASES_H
#define IPL_BENCH_THREADCASES_H

#include <semaphore.h>

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

/// A class with Start(ThreadEnd*), which makes a thread that tells its end, and Join(), which is not timed.
template <typename Thread>
void RunToEnd(State& state) {
  ThreadEnd end;
  Thread thread;
  while (state.KeepRunning()) {
    TimeOne(state, [&] {
      thread.Start(&end);
      end.Wait();
    });
    thread.Join();
  }
}

template <typename Thread>
void MeasureThread(const std::string& who) {
  MeasureManually("RunToEnd/" + who, 1000, RunToEnd<Thread>);
}

#endif  // IPL_BENCH_THREADCASES_H
