// SPDX-License-Identifier: Apache-2.0
// Slots 17 to 19: memory. The caller's file and line are part of the contract; nothing is recorded.
#include <stdlib.h>

#include "kernel/IPLKernelImpl.h"

void* IPLKernelImpl::Alloc(unsigned long size, const char*, int) { return ::malloc(size); }

void* IPLKernelImpl::ReAlloc(void* block, unsigned long size, const char*, int) {
  if (block == nullptr && size == 0) {
    return nullptr;
  }
  return ::realloc(block, size);
}

void IPLKernelImpl::Free(void* block, const char*, int) { ::free(block); }
