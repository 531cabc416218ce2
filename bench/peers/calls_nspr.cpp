// SPDX-License-Identifier: Apache-2.0
#include <prinrval.h>
#include <prmem.h>

#include "Bench.h"

namespace {

const Registered s_registered([] {
  Measure("AllocFree/nspr", [](State& state) {
    Each(state, [] {
      void* block = PR_Malloc(64);
      benchmark::DoNotOptimize(block);
      PR_Free(block);
    });
  });
  Measure("KernelTime/nspr", [](State& state) { Each(state, [] { benchmark::DoNotOptimize(PR_IntervalNow()); }); });
});

}  // namespace
