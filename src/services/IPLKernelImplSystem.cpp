// SPDX-License-Identifier: Apache-2.0
// Slots 35, 36, 40 and 41: the process and the system.
#include <stdio.h>
#include <unistd.h>

#include "kernel/IPLKernelImpl.h"
#include "services/CommandOutput.h"
#include "services/MemoryInfo.h"
#include "services/RandomHash.h"
#include "threads/KernelLockGuard.h"

namespace {

constexpr size_t kProcessListSize = 10000;

bool ReadRandomDevice(void* buffer, size_t size) {
  FILE* device = ::fopen("/dev/urandom", "re");
  if (device == nullptr) {
    return false;
  }
  const size_t count = ::fread(buffer, 1, size, device);
  ::fclose(device);
  return count == size;
}

}  // namespace

unsigned long IPLKernelImpl::GetUniqueID() {
  KernelLockGuard guard(m_pStateMutex);
  return ++m_uniqueID;
}

unsigned long IPLKernelImpl::GetProcessID() { return static_cast<unsigned long>(::getpid()); }

uint32_t IPLKernelImpl::RandomPureHasher(long value) { return HashRandom(static_cast<uint32_t>(value)); }

bool IPLKernelImpl::GetRandomData(void* buffer, unsigned long size) {
  if (ReadRandomDevice(buffer, size)) {
    return true;
  }
  char processes[kProcessListSize + 1];
  if (!ReadProcessList(processes, sizeof(processes))) {
    return false;
  }
  FillFromText(processes, static_cast<unsigned char*>(buffer), size);
  return true;
}

void IPLKernelImpl::GetMemoryInfo(unsigned long long& memTotal, unsigned long long& memFree,
                                  unsigned long long& swapTotal, unsigned long long& swapFree) {
  const MemoryInfo info = ReadMemoryInfo(*this, "/proc/meminfo");
  memTotal = info.memTotal;
  memFree = info.memFree;
  swapTotal = info.swapTotal;
  swapFree = info.swapFree;
}
