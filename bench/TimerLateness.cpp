// SPDX-License-Identifier: Apache-2.0
// How late timers are, beside a thread that just sleeps until an instant.
//
// All wait for 5 ms, again and again, and take turns within each round, so that all of them see the same machine. An
// instant counts from what it follows, as a periodic timer's does, so lateness does not add up:
//   due       for a bare sleep and a one-shot timer, the time read just before it was asked for, plus 5 ms; for a
//             periodic timer's later messages the time of the pass that fired it before, plus 5 ms
//   pass      time of the pass that fired the timer (GetFireTimeKernel) minus due
//   received  the time read by the client's thread when Receive returned, minus due: one more thread to wake
//   bare      the time read when clock_nanosleep returned, minus due
// None may be negative, ever.
#include <errno.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <thread>
#include <vector>

#include "BenchKernel.h"
#include "BenchOptions.h"

namespace {

constexpr int64_t kPeriod = 5000000;
constexpr int64_t kNanosecondsPerSecond = 1000000000;
constexpr int kTurns = 10;  // of each kind in a round
constexpr double kBar = 1.5;

class Latenesses {
 public:
  explicit Latenesses(const char* name) : m_name(name) {}
  void Add(int64_t lateness) { m_values.push_back(lateness); }
  void Sort() { std::sort(m_values.begin(), m_values.end()); }

  // The following need the values sorted.
  double Microseconds(double share) const {
    const auto index = static_cast<size_t>(share * static_cast<double>(m_values.size()));
    return static_cast<double>(m_values[std::min(index, m_values.size() - 1)]) / 1000.0;
  }
  bool IsNeverEarly() const { return m_values.front() >= 0; }

  /// Prints a row of the table. Returns whether median and 99th percentile are within the bar.
  bool Print(const Latenesses& bare) const {
    const double median = Microseconds(0.5) / bare.Microseconds(0.5);
    const double p99 = Microseconds(0.99) / bare.Microseconds(0.99);
    std::printf("| %-19s | %8.1f | %8.1f | %8.1f | %8.1f | %12.2f | %9.2f |\n", m_name, Microseconds(0.5),
                Microseconds(0.9), Microseconds(0.99), Microseconds(1.0), median, p99);
    return median <= kBar && p99 <= kBar;
  }

 private:
  const char* m_name;
  std::vector<int64_t> m_values;
};

int64_t MonotonicNow() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

void MeasureBareSleeps(Latenesses& bare) {
  for (int i = 0; i < kTurns; ++i) {
    const int64_t due = MonotonicNow() + kPeriod;
    const timespec until = {due / kNanosecondsPerSecond, due % kNanosecondsPerSecond};
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
    bare.Add(MonotonicNow() - due);
  }
}

/// The timers' side: what it measures, by kind of timer.
class TimerSide {
 public:
  TimerSide() : m_queue(m_kernel) {}

  void MeasurePeriodic() {
    int64_t due = m_kernel.Now() + kPeriod;
    const unsigned long timer = m_kernel->SetTimer(kPeriod, m_queue.Get(), true);
    for (int i = 0; i < kTurns; ++i) {
      due = ReceiveOne(due, periodicPass, periodicReceived) + kPeriod;
    }
    m_kernel->ClearTimer(timer, m_queue.Get());
  }

  void MeasureOneShots() {
    for (int i = 0; i < kTurns; ++i) {
      const int64_t due = m_kernel.Now() + kPeriod;
      m_kernel->SetTimer(kPeriod, m_queue.Get(), false);
      ReceiveOne(due, oneShotPass, oneShotReceived);
    }
  }

  Latenesses periodicPass{"periodic, pass"};
  Latenesses periodicReceived{"periodic, received"};
  Latenesses oneShotPass{"one-shot, pass"};
  Latenesses oneShotReceived{"one-shot, received"};

 private:
  int64_t ReceiveOne(int64_t due, Latenesses& pass, Latenesses& received) {
    const int64_t fired = m_queue.Receive();
    received.Add(m_kernel.Now() - due);
    pass.Add(fired - due);
    return fired;
  }

  RunningKernel m_kernel;
  TimerQueue m_queue;
};

}  // namespace

int main(int argc, char** argv) {
  const BenchOptions options = ParseBenchOptions(argc, argv, "--rounds", 200);
  Latenesses bare("clock_nanosleep");
  TimerSide timers;
  for (long round = 0; round < options.count; ++round) {
    timers.MeasurePeriodic();
    std::thread(MeasureBareSleeps, std::ref(bare)).join();
    timers.MeasureOneShots();
  }
  std::printf("Lateness in microseconds, %ld waits of 5 ms of each kind\n\n", options.count * kTurns);
  std::printf("| %-19s | %8s | %8s | %8s | %8s | %12s | %9s |\n", "", "median", "p90", "p99", "max", "median/bare",
              "p99/bare");
  std::printf("|---|---:|---:|---:|---:|---:|---:|\n");
  bare.Sort();
  bare.Print(bare);
  bool good = true;
  bool neverEarly = bare.IsNeverEarly();
  for (Latenesses* row :
       {&timers.periodicPass, &timers.periodicReceived, &timers.oneShotPass, &timers.oneShotReceived}) {
    row->Sort();
    good &= row->Print(bare);
    neverEarly &= row->IsNeverEarly();
  }
  if (!neverEarly) {
    std::printf("\nA message came before its instant: this must never be.\n");
    return 1;
  }
  if (!good) {
    std::printf("\nA median or a 99th percentile is more than %.1f times that of clock_nanosleep.\n", kBar);
  }
  return options.check && !good ? 1 : 0;
}
