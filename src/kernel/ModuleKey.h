// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_MODULEKEY_H
#define IPL_KERNEL_MODULEKEY_H

#include <stdint.h>

/// What a loaded module is found by: its name and the path that was asked for. A key in a table points into its record.
struct IPLKernelModuleKey {
  const char* name;  // never null
  const char* path;  // null: no path was given, which is not the same as an empty one
};

uint32_t PLHashTable_KeyHash(const IPLKernelModuleKey& key);
bool PLHashTable_KeyCompare(const IPLKernelModuleKey& left, const IPLKernelModuleKey& right);

#endif  // IPL_KERNEL_MODULEKEY_H
