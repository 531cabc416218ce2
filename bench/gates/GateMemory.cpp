// SPDX-License-Identifier: Apache-2.0
#include "GateMemory.h"

#include <stddef.h>

#include <atomic>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
}

namespace {

std::atomic<long> s_count{0};

void CountOne() { s_count.store(s_count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }

}  // namespace

long GateMemory::Count() { return s_count.load(std::memory_order_relaxed); }

// In the place of the C library's.
extern "C" __attribute__((visibility("default"))) void* malloc(size_t size) {
  CountOne();
  return __libc_malloc(size);
}

extern "C" __attribute__((visibility("default"))) void* calloc(size_t count, size_t size) {
  CountOne();
  return __libc_calloc(count, size);
}

extern "C" __attribute__((visibility("default"))) void* realloc(void* block, size_t size) {
  CountOne();
  return __libc_realloc(block, size);
}
