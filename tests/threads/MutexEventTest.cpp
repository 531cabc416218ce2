// SPDX-License-Identifier: Apache-2.0
#include <future>

#include "support/AllocControl.h"
#include "support/TestThread.h"

using Time = IPLKernel::Time;

class MutexEventTest : public ThreadFixture {
 protected:
  ~MutexEventTest() override {
    kernel->DestroyEvent(events[0]);
    kernel->DestroyEvent(events[1]);
  }

  IPLKernel::Event* const events[2] = {kernel->CreateEvent(false),
                                       kernel->CreateEvent(true)};  // the reset is automatic, manual
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

// As long as they were told to, in the clock and the precision of deadlines.
TEST_F(MutexEventTest, TimedWaitsEndNoEarlier) {
  for (const Time timeout : {Time(1), Time(1000000), Time(1500000000)}) {
    const int64_t begin = Now(CLOCK_REALTIME) / 1000 * 1000;
    EXPECT_FALSE(events[0]->Wait(timeout));
    EXPECT_GE(Now(CLOCK_REALTIME) - begin, timeout.GetNanoseconds());
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

// What a waiter still reads is the memory's next user's otherwise: here it is cleared, and the waiter goes on waiting.
// The build with yield points is the one that meets that moment for sure.
TEST_F(MutexEventTest, MayBeDestroyedAsSoonAsItIsSet) {
  AllocControl memory(kernel);
  memory.ClearFreed();
  for (int round = 0; round < 200; ++round) {
    IPLKernel::Event* event = kernel->CreateEvent(true);
    const auto wait = [&] { EXPECT_TRUE(event->Wait(kForever)); };
    TestThread first(wait), second(wait);
    first.AwaitBlocked();
    second.AwaitBlocked();
    event->Set();
    kernel->DestroyEvent(event);
  }
}
