// SPDX-License-Identifier: Apache-2.0
#include <uv.h>

#include <vector>

#include "Bench.h"

namespace {

void Ignore(uv_timer_t*) {}

// A pass of the loop in which one timer is due. It is set from outside: set again by its own callback with a delay of
// 0, it would fire for ever within one pass.
void PassOneDue(State& state) {
  uv_loop_t loop;
  uv_loop_init(&loop);
  std::vector<uv_timer_t> pending(static_cast<size_t>(state.range(0)));
  uint64_t hours = 1;
  for (uv_timer_t& timer : pending) {
    uv_timer_init(&loop, &timer);
    uv_timer_start(&timer, Ignore, 3600000 * hours++, 0);
  }
  uv_timer_t due;
  uv_timer_init(&loop, &due);
  while (state.KeepRunning()) {
    TimeOne(
        state,
        [&] {
          for (int i = 0; i < 1000; ++i) {
            uv_timer_start(&due, Ignore, 0, 0);
            uv_run(&loop, UV_RUN_NOWAIT);
          }
        },
        1000);
  }
  uv_timer_stop(&due);
  for (uv_timer_t& timer : pending) {
    uv_timer_stop(&timer);
  }
  uv_run(&loop, UV_RUN_NOWAIT);
}

const Registered s_registered([] {
  MeasureManually("PassOneDue/uv", 1, PassOneDue)->RangeMultiplier(10)->Range(10, 100000);
});

}  // namespace
