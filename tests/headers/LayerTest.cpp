// SPDX-License-Identifier: Apache-2.0
// What the optional layer does, seen from the kernel's side: what is given back, when, and what happens without memory.
#include <ipl/ArrayRange.h>
#include <ipl/KernelTime.h>
#include <ipl/MessageOwner.h>
#include <ipl/ScopedLock.h>
#include <ipl/ThreadStart.h>
#include <ipl/TimerEvent.h>
#include <ipl/TimerOwner.h>
#include <ipl/Utf8Text.h>

#include <thread>

#include "support/AllocControl.h"
#include "support/CallWatch.h"
#include "support/KernelFixture.h"

extern "C" unsigned long LayerWork(IPLKernel* kernel);

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using Picoseconds = std::chrono::duration<uint64_t, std::pico>;
using Time = IPLKernel::Time;

class LayerTest : public KernelFixture {};

/// Counts how often an object that was moved on is destroyed; it can be moved only.
class Ending {
 public:
  explicit Ending(int* count) : m_pCount(count) {}
  Ending(Ending&& other) noexcept : m_pCount(std::exchange(other.m_pCount, nullptr)) {}
  ~Ending() { *(m_pCount != nullptr ? m_pCount : &s_ignored) += 1; }
  bool IsHere() const { return m_pCount != nullptr; }

 private:
  static inline int s_ignored = 0;
  int* m_pCount;
};

TEST_F(LayerTest, AModuleMakesTheSameCallsWithoutIt) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the table is exchanged while the timer thread uses it";
#endif
  LayerWork(kernel);  // the first one starts the timer thread
  std::vector<unsigned> log;
  const AllocControl memory(kernel);
  const CallWatch<2, 4, 5, 6, 10, 15, 16, 29, 30, 32, 33, 34> watch(
      kernel, [&log, self = std::this_thread::get_id()](unsigned slot) {
        if (std::this_thread::get_id() == self) {  // others call at any time
          log.push_back(slot);
        }
      });
  EXPECT_EQ(LayerWork(kernel), 101000U + 0xA4 + 7);
  // What is made by hand: a queue, a trace, a thread, a timer and its message, a module; then, backwards, their ends.
  EXPECT_EQ(log, (std::vector<unsigned>{33, 15, 5, 6, 30, 29, 32, 2, 4, 16, 34}));
  EXPECT_EQ(memory.Held(), 0);
}

TEST_F(LayerTest, AnOwnerGivesBackOnceAndOnlyWhatItHas) {
  AllocControl memory(kernel);
  ipl::EventOwner first(kernel->CreateEvent(true));
  const long one = memory.Held();
  ASSERT_GT(one, 0);
  ipl::EventOwner second(std::move(first));
  EXPECT_FALSE(first);  // NOLINT: what a move leaves behind is defined
  first = ipl::EventOwner(kernel->CreateEvent(true));
  EXPECT_EQ(memory.Held(), 2 * one);
  first = std::move(second);
  EXPECT_EQ(memory.Held(), one);
  IPLKernel::Event* const event = first.release();
  first.reset();
  EXPECT_EQ(memory.Held(), one);
  first.reset(event);
  first.reset();
  ipl::EventOwner().reset();
  const ipl::ElementsOwner<int> elements(static_cast<int*>(operator new(
      0, 3U, 4U, nullptr, 0, static_cast<PLMem_Selector_PL_VECTOR_NEW_DELETE*>(nullptr))));
  EXPECT_EQ(memory.Held(), 1);
  EXPECT_FALSE(ipl::AcquireModule<IPLModule>(kernel, "none", "/none"));
}

TEST_F(LayerTest, ALockIsHeldForTheScopeAlone) {
  const ipl::MutexOwner mutex(kernel->CreateMutex());
  int free = 0;
  const auto tryIt = [&] { free += ipl::ScopedTryLock(*mutex) ? 1 : 0; };
  {
    const ipl::ScopedLock guard(*mutex);
    ipl::StartThread(kernel, "try", tryIt).Join();
    EXPECT_EQ(free, 0);
  }
  ASSERT_TRUE(mutex->TryLock());
  { const ipl::ScopedLock guard(*mutex, ipl::AdoptLock()); }
  ipl::StartThread(kernel, "try", tryIt).Join();
  ipl::StartThread(kernel, "again", tryIt).Join();
  EXPECT_EQ(free, 2);
}

TEST_F(LayerTest, TimesAreRoundedUpAndStopAtTheEnds) {
  const double kBig = 1e300;
  const std::pair<Time, int64_t> kTo[] = {
      {ipl::ToKernelTime(milliseconds(3)), 3000000},
      {ipl::ToKernelTime(Picoseconds(1)), 1},
      {ipl::ToKernelTime(Picoseconds(UINT64_MAX - 1)), 18446744073709552},
      {ipl::ToKernelTime(std::chrono::duration<int, std::pico>(-1999)), -1},
      {ipl::ToKernelTime(std::chrono::duration<double>(1e-10)), 1},
      {ipl::ToKernelTime(std::chrono::duration<double>(-1.5e-9)), -1},
      {ipl::ToKernelTime(std::chrono::duration<double>(kBig)), INT64_MAX},
      {ipl::ToKernelTime(std::chrono::duration<double>(-kBig)), INT64_MIN},
      {ipl::ToKernelTime(std::chrono::duration<double>(kBig * 0 / 0.0)), 0},
      {ipl::ToKernelTime(std::chrono::hours(2562047)), 9223369200000000000},
      {ipl::ToKernelTime(std::chrono::hours(2562048)), INT64_MAX},
      {ipl::ToKernelTime(std::chrono::hours(-2562048)), INT64_MIN},
      {ipl::ToKernelTime(nanoseconds::min()), INT64_MIN},
      {ipl::ToKernelTime(std::chrono::duration<short>(INT16_MAX)), INT64_MAX},
      {ipl::ToTimeout(milliseconds(-1)), 0},
      {ipl::ToTimeout(milliseconds::max()), INT64_MAX},
  };
  for (const auto& row : kTo) {
    EXPECT_EQ(row.first.GetNanoseconds(), row.second) << "row " << &row - kTo;
  }
  EXPECT_EQ(ipl::FromKernelTime<milliseconds>(1).count(), 1);
  EXPECT_EQ(ipl::FromKernelTime<milliseconds>(-1).count(), 0);
  EXPECT_EQ(ipl::FromKernelTime<milliseconds>(-1000001).count(), -1);
  EXPECT_EQ(ipl::FromKernelTime<nanoseconds>(INT64_MIN).count(), INT64_MIN);
  EXPECT_EQ(ipl::FromKernelTime<milliseconds>(Time::Forever()), milliseconds::max());
  EXPECT_EQ(ipl::FromKernelTime<Picoseconds>(2).count(), 2000U);
  EXPECT_EQ((ipl::FromKernelTime<std::chrono::duration<short, std::milli>>(-INT64_MAX).count()), INT16_MIN);
}

TEST_F(LayerTest, TextIsConvertedOrTheErrorToldAndTheTargetLeft) {
  // And how many units they have; 0: malformed.
  const std::pair<const char*, unsigned long> kTexts[] = {{"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", 5},
                                                          {"\xEF\xBF\xBF", 1},
                                                          {"\xF4\x8F\xBF\xBF", 2},
                                                          {"\x80", 0},
                                                          {"\xC0\xAF", 0},
                                                          {"\xE0\x9F\xBF", 0},
                                                          {"\xED\xA0\x80", 0},
                                                          {"\xF0\x8F\xBF\xBF", 0},
                                                          {"\xF4\x90\x80\x80", 0},
                                                          {"\xE2\x82", 0},
                                                          {"\xE2\x82z", 0}};
  AllocControl memory(kernel);
  for (const auto& [utf8, units] : kTexts) {
    PLString text;
    EXPECT_EQ(ipl::AppendUtf8(text, utf8) == ipl::TextStatus::kConverted, units != 0) << utf8;
    EXPECT_EQ(text.GetLength(), units) << utf8;
    std::string back;
    EXPECT_EQ(ipl::ToUtf8(text, back), ipl::TextStatus::kConverted);
    EXPECT_EQ(back, units != 0 ? utf8 : "");
    memory.FailAfter(0);
    EXPECT_EQ(ipl::AppendUtf8(text, "b"), ipl::TextStatus::kNoMemory);
    EXPECT_EQ(ipl::ToUtf8(text, back), units != 0 ? ipl::TextStatus::kNoMemory : ipl::TextStatus::kConverted);
    memory.FailAfter(AllocControl::kNever);
    EXPECT_EQ(ipl::AppendUtf8(text, std::string("c\0d", 3)), ipl::TextStatus::kMalformed);
  }
  for (const auto& units : {std::vector<unsigned short>{0xDC00, 0}, {0xD800, 0}, {0xD800, 'x', 0}}) {
    PLString text;
    std::string utf8 = "old";
    text.Append(units.data());
    EXPECT_EQ(ipl::ToUtf8(text, utf8), ipl::TextStatus::kMalformed);
    EXPECT_EQ(utf8, "old");
  }
  EXPECT_EQ(memory.Held(), 0);
}

TEST_F(LayerTest, ACallableIsDestroyedOnceHoweverItsThreadEnds) {
  enum Case { kRuns, kThrows, kRefused, kNoThread, kNoTask };
  AllocControl memory(kernel);
  for (const Case each : {kRuns, kThrows, kRefused, kNoThread, kNoTask}) {
    int ended = 0;
    int ran = 0;
    ipl::ThreadOwner thread(each == kNoThread ? nullptr : kernel->CreateThread());
    memory.FailAfter(each == kRefused ? 1 : each == kNoTask ? 0 : AllocControl::kNever);  // the next one is its event
    kernel->SetLastError(PLError_OK);
    auto callable = [ending = Ending(&ended), &ran, each] {
      ran += ending.IsHere() ? 1 : 0;
      if (each == kThrows) {
        throw 1;
      }
    };
    ipl::RunningThread running = ipl::StartThread(std::move(thread), "callable", std::move(callable));
    ipl::RunningThread moved(std::move(running));
    const bool starts = each <= kThrows;
    EXPECT_EQ(static_cast<bool>(moved), starts) << each;
    EXPECT_EQ(kernel->GetLastError(), starts             ? PLError_OK
                                      : each == kRefused ? kernel->m_ThreadCreationFailure
                                                         : PLError_NoMemory)
        << each;
    EXPECT_TRUE(moved.Join());
    EXPECT_EQ(moved.HasThrown(), each == kThrows);
    EXPECT_EQ(ran, starts ? 1 : 0) << each;
    EXPECT_EQ(ended, each <= kRefused ? 1 : 0) << each;  // else the callable here still has it
    EXPECT_EQ(memory.Held(), 0) << each;
    memory.FailAfter(AllocControl::kNever);
  }
}

TEST_F(LayerTest, ARunningThreadWaitsWhenItIsDestroyedAndAJoinMayTimeOut) {
  const ipl::EventOwner go(kernel->CreateEvent(true));
  int ended = 0;
  {
    ipl::RunningThread thread =
        ipl::StartThread(kernel, "wait", [ending = Ending(&ended), &go] { go->Wait(Time::Forever()); });
    EXPECT_FALSE(thread.Join(ipl::ToTimeout(nanoseconds(1))));
    EXPECT_EQ(kernel->GetLastError(), PLError_Timeout);
    go->Set();
  }
  EXPECT_EQ(ended, 1);
}

TEST_F(LayerTest, MessagesAndTimersAreGivenBackAndSaidOnce) {
  const ipl::QueueOwner queue(kernel->CreateMessageQueue());
  EXPECT_FALSE(ipl::Receive(*queue, 0));
  queue->Post(0, this);
  EXPECT_FALSE(ipl::TakeTimerEvent(kernel, *ipl::Receive(*queue).get()));
  const Time before = kernel->GetKernelTime();
  kernel->SetTimeGMT(1000000000000000000);
  ipl::TimerOwner timer(kernel->SetTimer(1, *queue, true), *queue);
  ipl::MessageOwner message = ipl::Receive(*queue);
  const ipl::TimerEvent fired = ipl::TakeTimerEvent(kernel, *message.get());
  EXPECT_EQ(fired.timerID, timer.get());
  EXPECT_LE(fired.fireTimeKernel, kernel->GetKernelTime());
  EXPECT_GT(fired.fireTimeKernel, before);
  EXPECT_GE(fired.fireTimeGMT, Time(1000000000000000000));
  timer = ipl::TimerOwner();
  EXPECT_FALSE(ipl::Receive(*queue, 0));
  PLArray<int> none;
  EXPECT_EQ(begin(none), end(none));
}
