// SPDX-License-Identifier: Apache-2.0
#include <future>
#include <limits>

#include "support/TestThread.h"
#include "threads/KernelEvent.h"
#include "threads/KernelThread.h"
#include "threads/WaitDeadline.h"

constexpr int64_t kSecond = 1000000000;
constexpr time_t kLatest = std::numeric_limits<time_t>::max();
static_assert(sizeof(time_t) == 8, "the rows below need a clock of 64 bits");

TEST(WaitDeadlineTest, AddsWithoutASignAndClamps) {
  const struct {
    int64_t timeout;
    timeval now;
    timespec end;
  } rows[] = {
      {0, {1000, 5}, {0, 0}},
      {1, {1000, 999999}, {1000, 999999001}},
      {1000, {1000, 999999}, {1001, 0}},
      {3 * kSecond / 2, {1000, 600000}, {1002, 100000000}},
      {-1000, {1000, 1}, {1000, 0}},
      {-1001, {1000, 1}, {18446745073, 709551615}},
      {-kSecond, {1000, 999999}, {18446745073, 709550616}},
      {INT64_MIN, {1000, 0}, {9223373036, 854775808}},
      {INT64_MAX - 1, {1000, 999999}, {9223373037, 854774806}},
      {kSecond, {kLatest - 1, 0}, {kLatest, 0}},
      {kSecond, {kLatest, 7}, {kLatest, 7000}},
      {-1, {kLatest, 0}, {kLatest, 709551615}},
  };
  for (const auto& row : rows) {
    const WaitDeadline deadline = WaitDeadline::After(row.timeout, row.now);
    EXPECT_FALSE(deadline.IsForever()) << row.timeout;
    EXPECT_EQ(deadline.GetInstant().tv_sec, row.end.tv_sec) << row.timeout << " after " << row.now.tv_sec;
    EXPECT_EQ(deadline.GetInstant().tv_nsec, row.end.tv_nsec) << row.timeout << " after " << row.now.tv_sec;
  }
  EXPECT_TRUE(WaitDeadline::After(INT64_MAX, {1000, 0}).IsForever());
}

TEST(WaitDeadlineTest, IsReducedToAClockOf32Bits) {
  EXPECT_FALSE(WaitDeadline::After(1, {INT32_MAX, 0}).ReduceTo32Bits());
  WaitDeadline late = WaitDeadline::After(kSecond + 5, {INT32_MAX, 0});
  EXPECT_TRUE(late.ReduceTo32Bits());
  EXPECT_EQ(late.GetInstant().tv_sec, INT32_MAX);
  EXPECT_FALSE(late.ReduceTo32Bits()) << "a second time it changes nothing";
}

TEST(KernelThreadTest, MapsPrioritiesToTheRoundRobinRange) {
  ASSERT_EQ(sched_get_priority_min(SCHED_RR), 1) << "the rows below are for 1 to 99";
  ASSERT_EQ(sched_get_priority_max(SCHED_RR), 99);
  const int rows[][2] = {{0, 94}, {1, 93}, {64, 70}, {127, 47}, {128, 47}, {192, 23}, {254, 1}, {255, 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(KernelThread::PriorityToPThreadPriority(static_cast<unsigned char>(row[0])), row[1]) << row[0];
  }
}

// It would be woken for nothing at each Set; and the count of waiters has an end.
TEST(KernelEventTest, ACancelledWaiterIsNotCounted) {
  KernelEvent event(false);
  const auto wait = [](void* argument) -> void* {
    return static_cast<KernelEvent*>(argument)->Wait(IPLKernel::Time::Forever()) ? argument : nullptr;
  };
  pthread_t thread = {};
  ASSERT_EQ(pthread_create(&thread, nullptr, wait, &event), 0);
  pthread_cancel(thread);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_FALSE(event.BeginSet()) << "nobody waits";
  EXPECT_TRUE(event.Wait(0));
}

TEST(ShutdownGateTest, CloseWaitsForThoseInsideAndRefusesNewcomers) {
  ShutdownGate gate;
  EXPECT_FALSE(gate.Enter()) << "it is closed at first";
  for (int round = 0; round < 2; ++round) {
    gate.Open();
    ASSERT_TRUE(gate.Enter());
    const auto closed = std::async(std::launch::async, [&] { gate.CloseAndDrain(); });
    for (; gate.Enter(); sched_yield()) {
      gate.Leave();
    }
    EXPECT_EQ(closed.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout) << "one is still inside";
    EXPECT_TRUE(gate.Join());
    gate.Leave();
    gate.Leave();
    closed.wait();
    EXPECT_FALSE(gate.Enter() || gate.Join());
  }
}
