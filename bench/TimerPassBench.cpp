// SPDX-License-Identifier: Apache-2.0
// A pass of the timer thread in which one timer is due that is set again, N others pending, and the client's receiving;
// no thread is switched. An event loop's pass also asks the system once whether there is anything else, which for the
// timer thread belongs to its wait. The limit reads the clock four times and hands one entry over a queue of malloc,
// mutex and condition.
#include <time.h>

#include "Bench.h"
#include "Posix.h"
#include "TimerQueue.h"
#include "foundation/TrackedMemory.h"
#include "messaging/KernelTimerManager.h"

namespace {

constexpr int64_t kHour = int64_t{3600} * 1000000000;

void PassOneDue(State& state) {
  const RunningKernel kernel;
  TimerQueue client(kernel);
  KernelTimerManager manager;
  manager.m_pKernel = IPLKernel::GetKernel();
  for (int64_t i = 0; i <= state.range(0); ++i) {
    const int64_t period = i == 0 ? 1 : kHour;
    TimerList::Insert(
        manager.m_kernelTimers,
        MakeTracked<TimerRecord>(TimerRecord{kernel.Now() + i * kHour, period, &client.Get(), 1, true}).release());
  }
  IPLKernel::Time wait;
  while (state.KeepRunning()) {
    manager.DispatchTimers(wait);
    client.Receive();
  }
  manager.FreeRecords(manager.m_kernelTimers);
}

void ClocksAndPost(State& state) {
  PosixQueue queue;
  while (state.KeepRunning()) {
    for (int i = 0; i < 4; ++i) {
      timespec now = {};
      ::clock_gettime(CLOCK_MONOTONIC, &now);
      benchmark::DoNotOptimize(now);
    }
    queue.Post(1);
    benchmark::DoNotOptimize(queue.Receive());
  }
}

const Registered s_registered([] {
  Measure("PassOneDue/ours", PassOneDue)->RangeMultiplier(10)->Range(10, 100000);
  Measure("PassOneDue/limit", ClocksAndPost);
});

}  // namespace
