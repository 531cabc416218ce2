// SPDX-License-Identifier: Apache-2.0
#include <signal.h>

#include <future>

#include "threads/TestThread.h"

namespace {

using Time = IPLKernel::Time;

class MutexEventTest : public ThreadFixture {
 protected:
  void SetUp() override {
    ThreadFixture::SetUp();
    events[0] = kernel->CreateEvent(false);
    events[1] = kernel->CreateEvent(true);
  }
  void TearDown() override {
    kernel->DestroyEvent(events[0]);
    kernel->DestroyEvent(events[1]);
    ThreadFixture::TearDown();
  }
  /// A finite wait lasts as long as it was told to, in the clock and the precision of deadlines.
  void ExpectFullWait(const std::function<bool(Time)>& wait, Time timeout) {
    const int64_t begin = Now(CLOCK_REALTIME) / 1000 * 1000;
    EXPECT_EQ(wait(timeout), timeout == kForever);
    EXPECT_TRUE(timeout == kForever || Now(CLOCK_REALTIME) - begin >= timeout.GetNanoseconds());
  }

  IPLKernel::Event* events[2] = {};  // with automatic and with manual reset
};

TEST_F(MutexEventTest, MutexIsRecursive) {
  IPLKernel::Mutex* mutex = kernel->CreateMutex();
  const auto isFree = [&] { return mutex->TryLock() && (mutex->Unlock(), true); };
  const auto isFreeElsewhere = [&] { return std::async(std::launch::async, isFree).get(); };
  mutex->Lock();
  EXPECT_TRUE(mutex->TryLock());
  for (int held = 2; held != 0; --held) {
    EXPECT_FALSE(isFreeElsewhere()) << "held " << held << " times";
    mutex->Unlock();
  }
  EXPECT_TRUE(isFreeElsewhere());
  kernel->DestroyMutex(mutex);
  kernel->DestroyMutex(nullptr);
  kernel->DestroyEvent(nullptr);
}

TEST_F(MutexEventTest, ResetModes) {
  for (const bool manual : {false, true}) {
    IPLKernel::Event* event = events[manual ? 1 : 0];
    EXPECT_EQ(Outcome(event->IsSet()), kMark);
    for (const Time timeout : {Time(0), kForever, Time(1), Time(-1), Time(INT64_MIN)}) {
      EXPECT_EQ(Outcome(event->Wait(0)), kTimeout);
      event->Set();
      event->Set();  // is not counted
      EXPECT_TRUE(event->IsSet());
      EXPECT_EQ(Outcome(event->Wait(timeout)), kDone);
      EXPECT_EQ(event->IsSet(), manual);
      EXPECT_EQ(Outcome(event->Wait(0)), manual ? kDone : kTimeout);
      event->Clear();
      EXPECT_FALSE(event->IsSet());
    }
  }
}

TEST_F(MutexEventTest, TimedWaitsEndNoEarlier) {
  for (const Time timeout : {Time(1), Time(1000000), Time(1500000000)}) {
    ExpectFullWait([&](Time full) { return events[0]->Wait(full); }, timeout);
  }
}

// A finite time-out of centuries, or a negative one that counts as such, sleeps: it uses next to no processor time.
TEST_F(MutexEventTest, SetReleasesOneOrAllHoweverLongTheyMayWait) {
  const Time timeouts[] = {kForever, Time(INT64_MAX - 1), Time(INT64_MIN), Time(-2000000000)};
  for (const int released : {1, 4}) {
    IPLKernel::Event* event = events[released == 4 ? 1 : 0];
    Semaphore ended;
    std::list<TestThread> waiters;
    for (const Time timeout : timeouts) {
      waiters.emplace_back([&, timeout] {
        const int64_t begin = Now(CLOCK_MONOTONIC);
        const int64_t beginUsed = Now(CLOCK_THREAD_CPUTIME_ID);
        EXPECT_TRUE(event->Wait(timeout));
        const int64_t used = Now(CLOCK_THREAD_CPUTIME_ID) - beginUsed;
        EXPECT_LT(used, (Now(CLOCK_MONOTONIC) - begin) / 10) << timeout.GetNanoseconds() << " spins";
        ended.Give();
      });
    }
    for (int count = 0; count < 4; ++count) {
      if (count % released == 0) {
        EXPECT_FALSE(ended.Take(count == 0 ? 500 : 30)) << "without a Set";
        event->Set();
      }
      ended.Take();
      EXPECT_EQ(event->IsSet(), released == 4);
    }
  }
}

std::atomic<int> s_signals{0};

TEST_F(MutexEventTest, SignalsEndNoWaitEarly) {
  struct sigaction action = {};  // without SA_RESTART: system calls return early
  action.sa_handler = [](int) { ++s_signals; };
  sigaction(SIGUSR1, &action, nullptr);
  IPLKernel::MessageQueue* queue = kernel->CreateMessageQueue();
  IPLKernel::Message* message = nullptr;
  Semaphore finish;
  TestThread runner([&] { finish.Take(); });
  const std::function<bool(Time)> operations[] = {
      [&](Time timeout) { return events[1]->Wait(timeout); },
      [&](Time timeout) { return (message = queue->Receive(timeout)) != nullptr; },
      [&](Time timeout) { return runner->WaitUntilFinished(timeout); }};
  for (const Time timeout : {Time::Milliseconds(300), kForever}) {
    Semaphore leave;
    std::atomic<int> ended{0};
    std::list<TestThread> waiters;
    for (const auto& operation : operations) {
      waiters.emplace_back([&] {
        ExpectFullWait(operation, timeout);
        ++ended;
        leave.Take();
      });
      waiters.back().AwaitBlocked();
    }
    for (int count = 0; timeout == kForever ? count < 100 : ended != 3; ++count) {
      for (const TestThread& waiter : waiters) {
        const int before = s_signals;
        pthread_kill(waiter.GetNative(), SIGUSR1);
        while (s_signals == before) {
          sched_yield();
        }
      }
    }
    EXPECT_EQ(ended, timeout == kForever ? 0 : 3);
    if (timeout == kForever) {
      events[1]->Set();
      queue->Post(1, nullptr);
      finish.Give();
    }
    for (size_t i = 0; i < waiters.size(); ++i) {
      leave.Give();
    }
  }
  queue->ReleaseMessage(message);
  kernel->DestroyMessageQueue(queue);
}

}  // namespace
