// SPDX-License-Identifier: Apache-2.0
// Slots 15 and 16: stack traces. Compiled without sibling calls: the slot is one of the frames that a trace drops.
#include "diagnostics/KernelStacktrace.h"
#include "kernel/IPLKernelImpl.h"

IPL_REAL_FRAME IPLKernel::Stacktrace* IPLKernelImpl::CreateStacktrace(unsigned long maxDepth, unsigned long skip) {
  return CreateKernelStacktrace(maxDepth, skip);
}

void IPLKernelImpl::DestroyStacktrace(Stacktrace* stacktrace) { DestroyKernelStacktrace(stacktrace); }
