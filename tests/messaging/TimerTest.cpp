// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <future>
#include <map>

#include "support/AllocControl.h"
#include "support/TestThread.h"

using ID = unsigned long;
using Queue = IPLKernel::MessageQueue;

constexpr int64_t kHour = INT64_C(3600000000000), kDay = 24 * kHour, kMay1 = 19844 * kDay;  // of 2024

static std::atomic<int64_t> s_now;
static IPLKernel::Time ReadClock(IPLKernel*) { return s_now.load(std::memory_order_relaxed); }

// The kernel's clock moves only when told to, so that every instant is exact. A timer is known by a letter.
class TimerTest : public KernelFixture {
 protected:
  TimerTest() {
    clock.Replace(20, &ReadClock);
    s_now = 0;
  }
  ~TimerTest() override {
    if (queue != nullptr) {
      kernel->DestroyMessageQueue(queue);  // what is pending is not due
    }
    IPLModule_IPLKernel_UnloadModule(kernel);  // ends the timer thread, before the tables are taken away
  }
  ID Named(char name, ID id) { return names[id] = name, id; }
  ID Set(char name, int64_t delay, bool again = false) { return Named(name, kernel->SetTimer(delay, *queue, again)); }
  ID SetGMT(char name, int64_t at, int64_t period = 0) { return Named(name, kernel->SetTimerGMT(at, *queue, period)); }
  // Takes all messages: the letters of timers, with a mark behind those of another pass than the last.
  std::string Take() {
    std::string text;
    while (IPLKernel::Message* message = queue->Receive(0)) {
      if (message->GetID() == kernel->GetTimerMessageID()) {
        auto* data = static_cast<IPLKernel::TimerMessageData*>(message->GetData());
        const bool last = data->GetFireTimeGMT() == kernel->GetTimeGMT();
        text += std::string(1, names[data->GetTimerID()]) + (last ? "" : "'");
        data->ReleaseTimerData();
      }
      queue->ReleaseMessage(message);
    }
    return text;
  }
  // Returns behind a whole pass: the second command is taken after the pass that follows the first.
  void Pass(int64_t now) { s_now = now, kernel->ClearTimer(0, *queue), kernel->ClearTimer(0, *queue); }
  // Returns what fires at each of these times of the kernel's clock, or since the first of May.
  std::string At(std::initializer_list<int64_t> times, bool may = false) {
    std::string text;
    for (int64_t time : times) {
      Pass(may ? s_now + kMay1 + time - kernel->GetTimeGMT().GetNanoseconds() : time);
      text += Take() + '|';
    }
    return text;
  }

  AllocControl memory{kernel};
  KernelTable clock{kernel};
  Queue* queue = kernel->CreateMessageQueue();
  std::map<ID, char> names;
};

TEST_F(TimerTest, FiresOnceNeverEarlyAndAtOnceWithoutADelay) {
  const ID messageID = kernel->GetTimerMessageID();
  for (int64_t delay : {INT64_C(1), 3 * kDay, INT64_MIN, INT64_C(-1), INT64_C(0)}) {
    const int64_t now = s_now, due = now + delay;
    EXPECT_GT(Set('a', delay, delay <= 0), messageID) << "a period of nothing is none; all identifiers differ";
    EXPECT_EQ(delay > 0 ? At({due - 1, due, due + kDay}) : '|' + At({now, now + kDay}), "|a||") << delay;
  }
  Set('z', INT64_MAX, true);
  EXPECT_TRUE(At({1000 * kDay}) == "|" && kernel->GetTimerMessageID() == messageID);
}

TEST_F(TimerTest, APeriodCountsFromThePassThatFired) {
  Set('a', 100, true);
  EXPECT_EQ(At({99, 103, 202, 203, 900, 999, 1000}), "|a||a|a||a|");
}

TEST_F(TimerTest, SettingGMTFiresWhatIsPassedInOrder) {
  kernel->SetTimeGMT(kMay1);
  SetGMT('d', kMay1 + 3), SetGMT('a', kMay1 + 1), SetGMT('b', kMay1 + 2, 5), SetGMT('c', kMay1 + 2);
  SetGMT('e', kMay1 + 3), SetGMT('z', INT64_MAX, INT64_MAX);
  EXPECT_EQ(At({0}, true), "|");
  kernel->SetTimeGMT(kMay1 + kDay);
  EXPECT_EQ(At({s_now}), "abcde|");
  kernel->SetTimeGMT(s_now.load());  // ignored: not after the kernel's clock
  EXPECT_EQ(kernel->GetTimeGMT(), kMay1 + kDay);
  kernel->SetTimeGMT(kMay1);  // back
  EXPECT_EQ(At({kDay + 4, kDay + 5}, true), "|b|");
  for (int64_t period : {INT64_C(0), INT64_MIN, INT64_MAX, kHour}) {
    SetGMT('p', kDay, period);
    EXPECT_EQ(Take(), "p") << "a past date fires before the call returns; period " << period;
  }
  EXPECT_EQ(At({kDay + kHour + 4, kDay + kHour + 5}, true), "b|p|");
}

TEST_F(TimerTest, AnInstantOfTheFirstDayIsATimeOfDay) {
  constexpr int64_t h = kHour, s = 1000000000;
  const int64_t cases[][3] = {{12 * h, 7 * h, 31 * h},
                              {h, 7 * h + s - 1, 7 * h},
                              {7 * h, 7 * h, 7 * h},
                              {7 * h + 1, 7 * h, 31 * h},
                              {12 * h, 0, 24 * h},
                              {12 * h, 24 * h - 1, 24 * h - s},
                              {0, 0, 0},
                              {12 * h, -1, 24 * h},
                              {12 * h, -h, 23 * h},
                              {23 * h + 1, -h, 23 * h + 1},
                              {12 * h, INT64_MIN, 12 * h}};
  for (const auto& [now, instant, due] : cases) {
    kernel->SetTimeGMT(kMay1 + now);
    SetGMT('a', instant);
    EXPECT_EQ(due > now ? At({due - 1, due, due + 48 * h}, true) : '|' + At({due, due + 48 * h}, true), "|a||")
        << now << ' ' << instant;
  }
}

TEST_F(TimerTest, ClearTimerWithdrawsAllOfThatTimerAndNothingElse) {
  const ID a = Set('a', 1, true), b = Set('b', 1, true), c = SetGMT('c', s_now + kDay, 1);
  for (int64_t now : {kDay, 2 * kDay, 3 * kDay}) {
    queue->Post(b, nullptr);
    Pass(now);
  }
  Queue* other = kernel->CreateMessageQueue();
  kernel->ClearTimer(a, *other), kernel->ClearTimer(c, *other), kernel->ClearTimer(b, *queue);
  EXPECT_EQ(queue->GetLength(), 9U);
  EXPECT_EQ(Take(), "a'c'a'c'ac");
  kernel->ClearTimer(c, *queue);
  EXPECT_EQ(At({4 * kDay}), "a|");
  kernel->DestroyMessageQueue(other);
}

TEST_F(TimerTest, ThePoolKeepsTenAndDataMayOutliveTheKernel) {
  kernel->GetTimerMessageID();
  const long before = memory.Held();
  for (int i = 0; i < 11; ++i) {
    Set('a', 0);
  }
  EXPECT_EQ(At({0}), "aaaaaaaaaaa|");
  EXPECT_EQ(memory.Held(), before + 10);
  Set('a', 0), Pass(0);
  IPLKernel::Message* message = queue->Receive(0);
  auto* data = static_cast<IPLKernel::TimerMessageData*>(message->GetData());
  queue->ReleaseMessage(message);
  kernel->DestroyMessageQueue(std::exchange(queue, nullptr));
  IPLModule_IPLKernel_UnloadModule(kernel);
  data->ReleaseTimerData();
  free(reinterpret_cast<char*>(data) - 8);  // nobody else did
}

static ObjectTable<Queue, 17>* s_queueTable;

// As a queue of a module's own may do that hands its messages on.
TEST_F(TimerTest, AMessageMayBeGoneWhenPostReturns) {
  kernel->SetTimeGMT(kMay1);
  const long before = memory.Held();
  ObjectTable<Queue, 17> table(queue);
  s_queueTable = &table;
  table.Replace(
      5, +[](Queue* self, ID id, void* data) {
        s_queueTable->Original<void(Queue*, ID, void*)>(5)(self, id, data);
        IPLKernel::Message* message = self->Receive(0);
        static_cast<IPLKernel::TimerMessageData*>(message->GetData())->ReleaseTimerData();
        self->ReleaseMessage(message);
      });
  EXPECT_NE(SetGMT('p', 2 * kDay), 0U);
  EXPECT_EQ(memory.Held(), before + 1) << "one message in the pool, once";
  Set('a', 0);
  EXPECT_EQ(At({0}), "|");
  EXPECT_EQ(memory.Held(), before + 1);
}

// The block of the first record that the timer thread frees is what the next allocation gets.
static struct {
  std::atomic<bool> armed{false};
  std::atomic<void*> block{nullptr};
  std::function<void()> freed;
  KernelTable* table;
} s_reuse;

static void Free(IPLKernel* self, void* block, const char* file, int line) {
  if (s_reuse.armed.exchange(false)) {
    s_reuse.block = block;
    s_reuse.freed();
  } else {
    s_reuse.table->Original<decltype(Free)>(19)(self, block, file, line);
  }
}

static void* Alloc(IPLKernel* self, unsigned long size, const char* file, int line) {
  void* block = s_reuse.block.exchange(nullptr);
  return block != nullptr ? block : s_reuse.table->Original<decltype(Alloc)>(17)(self, size, file, line);
}

TEST_F(TimerTest, ATimerMayTakeTheMemoryOfOneThatHasJustFired) {
  kernel->SetTimeGMT(kMay1);
  clock.Replace(17, &Alloc);
  clock.Replace(19, &Free);
  s_reuse.table = &clock;
  ID later = 0, past = 0;
  Semaphore freed;
  {
    TestThread other([&] {
      freed.Take();
      later = kernel->SetTimer(5, *queue, false);
    });
    s_reuse.freed = [&] {
      freed.Give();
      while (s_reuse.block != nullptr) {
        sched_yield();
      }
      other.AwaitBlocked();  // it has sent its command
    };
    other.AwaitBlocked();
    s_reuse.armed = true;
    past = SetGMT('p', 2 * kDay);
  }
  EXPECT_TRUE(past != 0 && later != 0);
  Named('l', later);
  EXPECT_EQ(At({4, 5}), "p'|l|");
}

TEST_F(TimerTest, AThreadIsNotCancelledWhileTheTimerThreadServesIt) {
  ID id = 0;
  bool cancelled = true;
  TestThread([&] {
    pthread_cancel(pthread_self());
    id = kernel->SetTimer(1, *queue, false);
    pthread_testcancel();
    cancelled = false;
  });
  EXPECT_TRUE(cancelled);
  Named('a', id);
  EXPECT_EQ(At({1}), "a|");
}

TEST_F(TimerTest, ExhaustedMemoryCostsOneOperationAndNothingElse) {
  const std::function<ID()> operations[] = {
      [this] { return Set('z', kDay); }, [this] { return kernel->SetTimeGMT(kMay1), 1; },
      [this] { return SetGMT('z', kDay, kDay); }, [this] { return kernel->ClearTimer(0, *queue), 1; },
      [this] {  // a date that is past
        Take();
        const ID id = SetGMT('p', 2 * kDay);
        EXPECT_EQ(Take(), id != 0 ? "p" : "");
        return id != 0 ? 1 : 0;
      }};
  std::string set;
  for (int i = 0; i < 50; ++i) {  // the first one makes the manager, later ones make the lists grow
    for (long n = 0, failures = -1; failures != memory.Failures(); ++n) {
      failures = memory.Failures();
      memory.FailAfter(n, 1);
      const ID id = operations[i % 5]();
      memory.FailAfter(AllocControl::kNever);
      EXPECT_TRUE(id != 0 || memory.Failures() != failures);
      set += id > 1 ? "z" : "";
    }
  }
  Take();
  EXPECT_EQ(At({kDay}), set + '|');
  // Without any memory a timer is cleared all the same, and one that is set is refused rather than lost.
  const ID cleared[] = {Set('x', kDay), SetGMT('y', kMay1 + kDay)};
  memory.FailAfter(0);
  for (const ID id : cleared) {
    kernel->ClearTimer(id, *queue);
  }
  EXPECT_EQ(kernel->SetTimer(0, *queue, false), 0U);
  EXPECT_EQ(kernel->SetTimerGMT(kDay * 2, *queue, 0), 0U);  // a date that is past
  memory.FailAfter(AllocControl::kNever);
  EXPECT_EQ(At({kDay + 1}), "|");
}

static std::atomic<int> s_begun{0};

// Sets, receives and clears timers, with an account of those that may still fire. Ends early when the kernel refuses.
static void UseTimers(Queue* queue, unsigned count) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  std::map<ID, bool> pending;  // and whether they are periodic
  const auto receive = [&](IPLKernel::Time timeout) {
    IPLKernel::Message* message = queue->Receive(timeout);
    if (message != nullptr) {
      auto* data = static_cast<IPLKernel::TimerMessageData*>(message->GetData());
      EXPECT_EQ(pending.count(data->GetTimerID()), 1U) << "fired twice, or after it was cleared";
      pending.erase(pending[data->GetTimerID()] ? 0 : data->GetTimerID());
      data->ReleaseTimerData();
      queue->ReleaseMessage(message);
    }
    return message != nullptr;
  };
  ID ids[8] = {}, id = 1;
  for (unsigned i = 0; i < count + 8 && id != 0; ++i) {
    const ID cleared = i % 2 == 1 ? ids[i % 8] : 0;
    kernel->ClearTimer(cleared, *queue);
    kernel->SetTimeGMT(i % 512 == 0 ? std::max(kernel->GetTimeGMT().GetNanoseconds(), kMay1) + 1000000 : 0);
    s_begun += i == 8 ? 1 : 0;
    if (i < count) {
      const int64_t delay = 1 + i % 5 * 50000;
      id = i % 3 == 0
               ? kernel->SetTimerGMT(kernel->GetTimeGMT().GetNanoseconds() + delay, *queue, i % 8 == 1 ? delay : 0)
               : kernel->SetTimer(delay, *queue, i % 8 == 1);
      ids[i % 8] = id;
      pending[id] = i % 8 == 1;
    }
    pending.erase(id != 0 ? cleared : 0);  // both may have been refused
    while (i % 16 == 0 && receive(0)) {
    }
  }
  while (receive(id != 0 && !pending.empty() ? IPLKernel::Time::Forever() : 0)) {
  }
}

using TimerLoadTest = KernelFixture;

TEST_F(TimerLoadTest, EachOf100000TimersFiresOnceOrIsCleared) {
  std::vector<std::future<void>> threads;
  for (int i = 0; i < 4; ++i) {
    threads.push_back(std::async(std::launch::async, [this] {
      Queue* queue = kernel->CreateMessageQueue();
      UseTimers(queue, 25000);
      kernel->DestroyMessageQueue(queue);
    }));
  }
  threads.clear();
  EXPECT_EQ(kernel->GetUniqueID(), 100002U) << "one for each timer, and one for their messages, none twice";
}

TEST(TimerShutDownTest, OperationsThatRaceItAreAnsweredOrRefused) {
  // The cleanup of a detached thread, which shut-down waits for.
  static const auto use = [](IPLKernel::Thread*, void* queue) { UseTimers(static_cast<Queue*>(queue), 1U << 30); };
  // Timers use the queues until their kernel is gone, and then nobody can destroy them; they stay reachable.
  static auto& queues = *new std::vector<Queue*>;
  for (int round = 0; round < 20; ++round) {
    const RunningKernel running;
    s_begun = 0;
    for (int i = 0; i < 4; ++i) {
      queues.push_back(running.kernel->CreateMessageQueue());
      const auto detach = [](IPLKernel::Thread* self, void*) { self->Detach(use); };
      running.kernel->CreateThread()->Run("user", detach, queues.back());
    }
    while (s_begun < 4) {
      sched_yield();
    }
  }
}
