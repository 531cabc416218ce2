// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "Bench.h"

namespace {

const Registered s_registered([] {
  Measure("AllocFree/glib", [](State& state) {
    Each(state, [] {
      void* block = g_malloc(64);
      benchmark::DoNotOptimize(block);
      g_free(block);
    });
  });
  Measure("KernelTime/glib",
          [](State& state) { Each(state, [] { benchmark::DoNotOptimize(g_get_monotonic_time()); }); });
});

}  // namespace
