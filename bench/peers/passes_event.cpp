// SPDX-License-Identifier: Apache-2.0
#include <event2/event.h>

#include <vector>

#include "Bench.h"

namespace {

void Ignore(evutil_socket_t, short, void*) {}

// A pass of the loop in which one timer is due, set from outside. The base's clock is the precise one, as the kernel's.
void PassOneDue(State& state) {
  event_config* config = event_config_new();
  event_config_set_flag(config, EVENT_BASE_FLAG_PRECISE_TIMER);
  event_base* base = event_base_new_with_config(config);
  event_config_free(config);
  std::vector<event*> pending;
  for (int64_t i = 0; i < state.range(0); ++i) {
    pending.push_back(evtimer_new(base, Ignore, nullptr));
    const timeval later = {3600 * (i + 1), 0};
    evtimer_add(pending.back(), &later);
  }
  event* due = evtimer_new(base, Ignore, nullptr);
  const timeval now = {0, 0};
  while (state.KeepRunning()) {
    TimeOne(
        state,
        [&] {
          for (int i = 0; i < 1000; ++i) {
            evtimer_add(due, &now);
            event_base_loop(base, EVLOOP_ONCE);
          }
        },
        1000);
  }
  event_free(due);
  for (event* timer : pending) {
    event_free(timer);
  }
  event_base_free(base);
}

const Registered s_registered([] {
  MeasureManually("PassOneDue/event", 1, PassOneDue)->RangeMultiplier(10)->Range(10, 100000);
});

}  // namespace
