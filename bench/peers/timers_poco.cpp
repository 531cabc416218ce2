// SPDX-License-Identifier: Apache-2.0
#include <semaphore.h>

#include <Poco/Util/Timer.h>
#include <Poco/Util/TimerTask.h>

#include "Bench.h"

namespace {

struct Burst {
  int64_t left;
  std::chrono::steady_clock::time_point first;
  double seconds;
  sem_t done;
};

class Task : public Poco::Util::TimerTask {
 public:
  Task(Burst& burst, bool isFirst) : m_burst(burst), m_isFirst(isFirst) {}
  void run() override {
    if (m_isFirst) {
      m_burst.first = std::chrono::steady_clock::now();
    }
    if (--m_burst.left == 0) {
      m_burst.seconds = SecondsSince(m_burst.first);
      ::sem_post(&m_burst.done);
    }
  }

 private:
  Burst& m_burst;
  bool m_isFirst;
};

// From the first task to the last. All are scheduled for one instant that is still to come: a delay or an interval of 0
// would run for ever.
void FireAndReceive(State& state) {
  const OneProcessor one;
  Burst burst = {};
  ::sem_init(&burst.done, 0, 0);
  TakeMiddle(state, 11, [&] {
    burst.left = state.range(0);
    Poco::Util::Timer timer;
    const Poco::Timestamp due = Poco::Timestamp() + 30000;
    for (int64_t i = 0; i < state.range(0); ++i) {
      timer.schedule(new Task(burst, i == 0), due);
    }
    ::sem_wait(&burst.done);
    return burst.seconds / static_cast<double>(state.range(0));
  });
  ::sem_destroy(&burst.done);
}

const Registered s_registered([] { MeasureManually("FireAndReceive/poco", 1, FireAndReceive)->Arg(100)->Arg(1000); });

}  // namespace
