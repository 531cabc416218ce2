// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_GATES_GATECASES_H
#define IPL_BENCH_GATES_GATECASES_H

#include "GateMeter.h"

// They need a kernel that runs.
void MeasureTexts(Meter& meter);
void MeasureTimers(Meter& meter);

#endif  // IPL_BENCH_GATES_GATECASES_H
