// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_YIELDPOINT_H
#define IPL_THREADS_YIELDPOINT_H

#include <sched.h>

/// Stands where another thread may run on as soon as a step is done: in front of and behind the step that lets it. A
/// build for tests gives up the processor there, so that races which need just this order show.
inline void YieldPoint() {
#ifdef IPL_YIELD_POINTS
  ::sched_yield();
#endif
}

#endif  // IPL_THREADS_YIELDPOINT_H
