// SPDX-License-Identifier: Apache-2.0
#include <uv.h>

#include "Bench.h"

namespace {

const Registered s_registered([] {
  Measure("KernelTime/uv", [](State& state) { Each(state, [] { benchmark::DoNotOptimize(uv_hrtime()); }); });
});

}  // namespace
