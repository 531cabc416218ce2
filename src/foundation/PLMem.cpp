// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLMem.h>

#include <stdint.h>

#include <ipl/IPLKernel.h>

namespace {

constexpr unsigned long kHeaderSize = 8;

void* AllocateBlock(uint64_t byteCount, uint32_t elementCount, const char* file, int line) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  if (byteCount == 0 || byteCount > UINT32_MAX - kHeaderSize || kernel == nullptr) {
    return nullptr;
  }
  auto* block = static_cast<uint32_t*>(kernel->Alloc(static_cast<unsigned long>(byteCount) + kHeaderSize, file, line));
  if (block == nullptr) {
    return nullptr;
  }
  block[1] = elementCount;
  return block + 2;
}

void FreeBlock(void* p, const char* file, int line) {
  IPLKernel* kernel = IPLKernel::GetKernel();
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
  return AllocateBlock(static_cast<uint64_t>(count) * elementSize, count, file, line);
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
