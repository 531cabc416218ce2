// SPDX-License-Identifier: Apache-2.0
// What callers of timers pay, and what a pass of the timer thread costs.
#include <stdint.h>

#include <string>
#include <vector>

#include <ipl/IPLKernel.h>

#include "GateCases.h"

namespace {

constexpr int64_t kHour = int64_t{3600} * 1000000000;
constexpr int64_t kStart = int64_t{50} * 365 * 24 * kHour;  // a date, and no time of day

/// Timers of one queue that are set and not yet cleared.
class SetTimers {
 public:
  explicit SetTimers(IPLKernel* kernel) : m_kernel(kernel), m_queue(kernel->CreateMessageQueue()) {}
  ~SetTimers() {
    ClearAll();
    m_kernel->DestroyMessageQueue(m_queue);
  }
  SetTimers(const SetTimers&) = delete;
  SetTimers& operator=(const SetTimers&) = delete;

  unsigned long GetCount() const { return m_timers.size(); }
  void Set() { m_timers.push_back(m_kernel->SetTimer(kHour, *m_queue, false)); }
  void SetPeriodicGMT(int64_t instant) { m_timers.push_back(m_kernel->SetTimerGMT(instant, *m_queue, kHour)); }
  void ClearOne() {
    m_kernel->ClearTimer(m_timers.back(), *m_queue);
    m_timers.pop_back();
  }
  void ClearAll() {
    while (!m_timers.empty()) {
      ClearOne();
    }
  }
  void ReceiveFromEach() {
    for (unsigned long i = 0; i < m_timers.size(); ++i) {
      IPLKernel::Message* message = m_queue->Receive(IPLKernel::Time::Forever());
      static_cast<IPLKernel::TimerMessageData*>(message->GetData())->ReleaseTimerData();
      m_queue->ReleaseMessage(message);
    }
  }

 private:
  IPLKernel* m_kernel;
  IPLKernel::MessageQueue* m_queue;
  std::vector<unsigned long> m_timers;
};

// Clearing comes first: then the lists have room for those that are set.
void MeasureCalls(Meter& meter, IPLKernel* kernel) {
  SetTimers timers(kernel);
  while (timers.GetCount() < meter.GetCalls()) {
    timers.Set();
  }
  meter.Measure("timer-clear", [&] { timers.ClearOne(); });
  timers.ClearAll();
  meter.Measure("timer-set", [&] { timers.Set(); });
}

// Periodic timers of GMT, which SetTimeGMT makes due. It returns when the timer thread has taken the request, just
// before the pass; the next request is taken behind the pass. So this is two calls and two passes, one of which fires,
// and the last one may lie behind the count, as another one may before.
void MeasurePasses(Meter& meter, IPLKernel* kernel) {
  int64_t now = kStart;
  kernel->SetTimeGMT(now);
  for (const unsigned long count : {1UL, 10UL, 100UL}) {  // one, few and many are fired in ways of their own
    SetTimers timers(kernel);
    while (timers.GetCount() < count) {
      timers.SetPeriodicGMT(now + kHour);
    }
    meter.Measure(("timer-fire-" + std::to_string(count)).c_str(), [&] {
      now += 2 * kHour;
      kernel->SetTimeGMT(now);
      kernel->SetTimeGMT(now);
      timers.ReceiveFromEach();
    });
  }
}

}  // namespace

void MeasureTimers(Meter& meter) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  MeasureCalls(meter, kernel);
  MeasurePasses(meter, kernel);
}
