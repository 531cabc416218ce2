// SPDX-License-Identifier: Apache-2.0
#include <ipl/IPLKernel.h>

extern "C" IPL_API IPLKernel::Stacktrace* TraceModule_Take(IPLKernel* kernel) {
  IPLKernel::Stacktrace* const volatile trace = kernel->CreateStacktrace(32, 0);  // not the last thing that is done
  return trace;
}
