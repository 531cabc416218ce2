// SPDX-License-Identifier: Apache-2.0
// Slots 17 to 19, and the operators that take their memory from them. The caller's file and line are part of the
// contract; nothing is recorded.
#include <ipl/PLMem.h>

#include <stdint.h>
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

namespace {

constexpr uint32_t kHeaderSize = 8;

// Every message and every object passes here: this saves the call of GetKernel, and its barrier. Whoever allocates has
// the kernel already, or got to know of it through somebody who has.
IPLKernel* GetKernelObject() { return IPLKernelImpl::s_pKernelImpl.load(std::memory_order_relaxed); }

void* AllocateBlock(size_t byteCount, uint32_t elementCount, const char* file, int line) {
  IPLKernel* kernel = GetKernelObject();
  if (byteCount - 1 >= UINT32_MAX - kHeaderSize || kernel == nullptr) {  // 0 wraps around
    return nullptr;
  }
  auto* block = static_cast<uint32_t*>(kernel->Alloc(static_cast<unsigned long>(byteCount) + kHeaderSize, file, line));
  if (block == nullptr) {
    return nullptr;
  }
  block[1] = elementCount;
  return block + kHeaderSize / sizeof(*block);
}

void FreeBlock(void* p, const char* file, int line) {
  IPLKernel* kernel = GetKernelObject();
  if (p != nullptr && kernel != nullptr) {
    kernel->Free(static_cast<char*>(p) - kHeaderSize, file, line);
  }
}

}  // namespace

void* operator new(size_t size, const char* file, int line, PLMem_Selector_PL_NEW_DELETE*) noexcept {
  return AllocateBlock(size, 1, file, line);
}

void operator delete(void* p, const char* file, int line, PLMem_Selector_PL_NEW_DELETE*) noexcept {
  FreeBlock(p, file, line);
}

void* operator new(size_t, unsigned int count, unsigned int elementSize, const char* file, int line,
                   PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept {
  const uint64_t byteCount = static_cast<uint64_t>(count) * elementSize;
  return byteCount <= UINT32_MAX ? AllocateBlock(static_cast<size_t>(byteCount), count, file, line) : nullptr;
}

void operator delete(void* p, unsigned int, unsigned int, const char* file, int line,
                     PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept {
  FreeBlock(p, file, line);
}

void* operator new(size_t, unsigned int byteCount, const char* file, int line,
                   PLMem_Selector_PL_MALLOC_FREE*) noexcept {
  return AllocateBlock(byteCount, 0, file, line);
}

void operator delete(void* p, unsigned int, const char* file, int line, PLMem_Selector_PL_MALLOC_FREE*) noexcept {
  FreeBlock(p, file, line);
}

void* operator new[](size_t, const char*, int, PLMem_Selector_PL_NEW_DELETE*) noexcept { return nullptr; }

void operator delete[](void*, const char*, int, PLMem_Selector_PL_NEW_DELETE*) noexcept {}

void* operator new[](size_t, unsigned int, unsigned int, const char*, int,
                     PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept {
  return nullptr;
}

void operator delete[](void*, unsigned int, unsigned int, const char*, int,
                       PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept {}

void* operator new[](size_t, unsigned int, const char*, int, PLMem_Selector_PL_MALLOC_FREE*) noexcept {
  return nullptr;
}

void operator delete[](void*, unsigned int, const char*, int, PLMem_Selector_PL_MALLOC_FREE*) noexcept {}
