// SPDX-License-Identifier: Apache-2.0
// Slots 35, 36, 40 and 41: the process and the system. Identifiers and random data are not served yet.
#include <unistd.h>

#include "kernel/IPLKernelImpl.h"
#include "services/MemoryInfo.h"

unsigned long IPLKernelImpl::GetUniqueID() { return 0; }

unsigned long IPLKernelImpl::GetProcessID() { return static_cast<unsigned long>(::getpid()); }

bool IPLKernelImpl::GetRandomData(void*, unsigned long) { return false; }

void IPLKernelImpl::GetMemoryInfo(unsigned long long& memTotal, unsigned long long& memFree,
                                  unsigned long long& swapTotal, unsigned long long& swapFree) {
  const MemoryInfo info = ReadMemoryInfo(*this, "/proc/meminfo");
  memTotal = info.memTotal;
  memFree = info.memFree;
  swapTotal = info.swapTotal;
  swapFree = info.swapFree;
}
