// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <thread>

#include "Bench.h"

namespace {

gboolean Count(gpointer fired) {
  ++*static_cast<int64_t*>(fired);
  return FALSE;
}

// All are due when the context is first asked.
void FireAndReceive(State& state) {
  const OneProcessor one;
  TakeMiddle(state, 21, [&] {
    GMainContext* context = g_main_context_new();
    int64_t fired = 0;
    for (int64_t i = 0; i < state.range(0); ++i) {
      GSource* source = g_timeout_source_new(1);
      g_source_set_callback(source, Count, &fired, nullptr);
      g_source_attach(source, context);
      g_source_unref(source);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    const double seconds = SecondsOf([&] {
      while (fired < state.range(0)) {
        g_main_context_iteration(context, TRUE);
      }
    });
    g_main_context_unref(context);
    return seconds / static_cast<double>(state.range(0));
  });
}

const Registered s_registered([] { MeasureManually("FireAndReceive/glib", 1, FireAndReceive)->Arg(100)->Arg(1000); });

}  // namespace
