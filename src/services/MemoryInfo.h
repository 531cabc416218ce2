// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_SERVICES_MEMORYINFO_H
#define IPL_SERVICES_MEMORYINFO_H

class IPLKernel;

/// Sizes in bytes, 0 where unknown.
struct MemoryInfo {
  unsigned long long memTotal = 0;
  unsigned long long memFree = 0;
  unsigned long long swapTotal = 0;
  unsigned long long swapFree = 0;
};

/// Reads a file of the form of /proc/meminfo. Of a label that occurs more than once the last value holds; what cannot
/// be read stays 0.
MemoryInfo ReadMemoryInfo(IPLKernel& kernel, const char* path);

#endif  // IPL_SERVICES_MEMORYINFO_H
