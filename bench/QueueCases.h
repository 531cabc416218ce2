// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_QUEUECASES_H
#define IPL_BENCH_QUEUECASES_H

#include <semaphore.h>
#include <stdint.h>

#include <thread>
#include <vector>

#include "Bench.h"

/// A class with Post(value) and Receive() is measured as a queue. Values are not 0.

template <typename Queue>
void PostReceive(State& state) {
  Queue queue;
  for (int64_t i = 0; i < state.range(0); ++i) {
    queue.Post(1);
  }
  Each(state, [&] {
    queue.Post(1);
    benchmark::DoNotOptimize(queue.Receive());
  });
  for (int64_t i = 0; i < state.range(0); ++i) {
    queue.Receive();
  }
}

/// All are posted, then all received.
template <typename Queue>
void FillDrain(State& state) {
  Queue queue;
  const int64_t count = state.range(0);
  const auto fillAndDrain = [&] {
    for (int64_t i = 0; i < count; ++i) {
      queue.Post(1);
    }
    for (int64_t i = 0; i < count; ++i) {
      queue.Receive();
    }
  };
  while (state.KeepRunning()) {
    TimeOne(state, fillAndDrain, count);
  }
}

/// Producers take leave to post 16 messages at a time, so that at most 64 are pending; the leave costs the same for
/// every queue. The time is that of a message. Each producer numbers its messages, and the receiver looks at that.
template <typename Queue>
void Throughput(State& state) {
  constexpr uintptr_t kLeave = 16;
  constexpr uintptr_t kMessages = 49152;
  const auto producers = static_cast<uintptr_t>(state.range(0));
  Queue queue;
  sem_t leaves;
  ::sem_init(&leaves, 0, 64 / kLeave);
  const auto produce = [&](uintptr_t producer) {
    for (uintptr_t i = 1; i <= kMessages / producers; ++i) {
      if (i % kLeave == 1) {
        ::sem_wait(&leaves);
      }
      queue.Post(i << 3 | producer);
    }
  };
  const auto transfer = [&] {
    std::vector<std::thread> threads;
    std::vector<uintptr_t> last(producers, 0);
    for (uintptr_t i = 0; i < producers; ++i) {
      threads.emplace_back(produce, i);
    }
    for (uintptr_t i = 1; i <= kMessages; ++i) {
      const uintptr_t value = queue.Receive();
      if (value >> 3 != ++last[value & 7]) {
        state.SkipWithError("a message was lost, or came out of order");
      }
      if (i % kLeave == 0) {
        ::sem_post(&leaves);
      }
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  };
  while (state.KeepRunning()) {
    TimeOne(state, transfer, kMessages);
  }
  ::sem_destroy(&leaves);
}

/// There and back between two threads, over a queue for each way.
template <typename Queue>
void SendReply(State& state) {
  const OneProcessor one;
  Queue there;
  Queue back;
  std::thread other([&] {
    uintptr_t value = 0;
    do {
      value = there.Receive();
      back.Post(1);
    } while (value != 2);
  });
  while (state.KeepRunning()) {
    there.Post(1);
    back.Receive();
  }
  there.Post(2);
  other.join();
}

template <typename Queue>
void MeasureQueue(const std::string& who, bool withCurves = true) {
  auto* pending = Measure("PostReceive/" + who, PostReceive<Queue>)->Arg(0)->Arg(16);
  MeasureManually("Throughput/" + who, 1, Throughput<Queue>)->Arg(1)->Arg(4);
  if (withCurves) {
    pending->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);
    for (const int64_t count : {10, 100, 1000, 10000, 100000}) {
      MeasureManually("FillDrain/" + who, count < 1000 ? 100 : 1, FillDrain<Queue>)->Arg(count);
    }
  }
}

#endif  // IPL_BENCH_QUEUECASES_H
