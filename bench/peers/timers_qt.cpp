// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>
#include <QTimer>
#include <thread>
#include <vector>

#include "Bench.h"

namespace {

void FireAndReceive(State& state) {
  const OneProcessor one;
  static char name[] = "bench";
  static char* arguments[] = {name, nullptr};
  int count = 1;
  QCoreApplication application(count, arguments);
  TakeMiddle(state, 21, [&] {
    int64_t fired = 0;
    std::vector<QTimer> timers(static_cast<size_t>(state.range(0)));
    for (QTimer& timer : timers) {
      timer.setSingleShot(true);
      timer.setTimerType(Qt::PreciseTimer);
      timer.callOnTimeout([&] { ++fired; });
      timer.start(1);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    return SecondsOf([&] {
             while (fired < state.range(0)) {
               QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
             }
           }) /
           static_cast<double>(state.range(0));
  });
}

const Registered s_registered([] { MeasureManually("FireAndReceive/qt", 1, FireAndReceive)->Arg(100)->Arg(1000); });

}  // namespace
