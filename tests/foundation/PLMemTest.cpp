// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLMem.h>

#include <stdint.h>

#include "support/AllocControl.h"
#include "support/KernelFixture.h"

using Scalar = PLMem_Selector_PL_NEW_DELETE*;
using Counted = PLMem_Selector_PL_VECTOR_NEW_DELETE*;
using Raw = PLMem_Selector_PL_MALLOC_FREE*;

const char kFile[] = "file.cpp";

static void* NewScalar(size_t size) { return operator new (size, kFile, 7, Scalar{}); }
static void* NewCounted(unsigned count, unsigned size) { return operator new (0, count, size, kFile, 7, Counted{}); }
static void* NewRaw(unsigned size) { return operator new (0, size, kFile, 7, Raw{}); }

const struct {
  void* (*allocate)();
  void (*free)(void*);
  void (*freeArray)(void*);
  unsigned long bytes;
  uint32_t count;
} kFamilies[] = {{[] { return NewScalar(12); }, [](void* p) { operator delete (p, kFile, 8, Scalar{}); },
                  [](void* p) { operator delete[](p, kFile, 8, Scalar{}); }, 12, 1},
                 {[] { return NewCounted(5, 4); }, [](void* p) { operator delete (p, 0U, 0U, kFile, 8, Counted{}); },
                  [](void* p) { operator delete[](p, 0U, 0U, kFile, 8, Counted{}); }, 20, 5},
                 {[] { return NewRaw(100); }, [](void* p) { operator delete (p, 0U, kFile, 8, Raw{}); },
                  [](void* p) { operator delete[](p, 0U, kFile, 8, Raw{}); }, 100, 0}};

using PLMemTest = KernelFixture;

TEST_F(PLMemTest, EachFamilyAsksForAHeaderMoreAndGivesTheWholeBlockBack) {
  for (const auto& family : kFamilies) {
    AllocControl memory(kernel);
    char* p = static_cast<char*>(family.allocate());
    EXPECT_EQ(memory.lastAlloc.size, family.bytes + 8);
    EXPECT_EQ(p, memory.lastAlloc.block + 8);
    EXPECT_EQ(memory.lastAlloc.file + memory.lastAlloc.line, kFile + 7);
    uint32_t count = 99;
    memcpy(&count, p - 4, sizeof(count));
    EXPECT_EQ(count, family.count);
    family.freeArray(p);
    family.free(nullptr);
    EXPECT_EQ(memory.Frees(), 0);
    memset(p, 0xFF, family.bytes);
    family.free(p);
    EXPECT_EQ(memory.lastFree.block, p - 8);
    EXPECT_EQ(memory.lastFree.file + memory.lastFree.line, kFile + 8);
    memory.FailAfter(0);
    EXPECT_EQ(family.allocate(), nullptr);
  }
}

TEST_F(PLMemTest, NothingIsAskedForWithoutBytesOrBeyond32Bits) {
  AllocControl memory(kernel);
  void* const kNothing[] = {NewScalar(0),
                            NewScalar(SIZE_MAX - 7),
                            NewRaw(0),
                            NewRaw(UINT32_MAX - 7),
                            NewCounted(0, 4),
                            NewCounted(4, 0),
                            NewCounted(0x10000, 0x10000),
                            NewCounted(0x40000001, 4),
                            operator new[](12, kFile, 7, Scalar{}),
                            operator new[](0, 5U, 4U, kFile, 7, Counted{}),
                            operator new[](0, 100U, kFile, 7, Raw{})};
  for (void* p : kNothing) {
    EXPECT_EQ(p, nullptr);
  }
  EXPECT_EQ(memory.Allocations(), 0);
  memory.FailAfter(0);
  EXPECT_EQ(NewRaw(UINT32_MAX - 8), nullptr);
  EXPECT_EQ(memory.lastAlloc.size, UINT32_MAX);
  EXPECT_EQ(kernel->GetLastError(), PLError_OK);
}

// What is constructed in it, tests/kit tries.
TEST_F(PLMemTest, NullHasNoObjectAndReAllocKeepsTheContent) {
  PLTypes_ScalarDelete(static_cast<IPLModule*>(nullptr), kFile, 8);
  EXPECT_EQ(kernel->ReAlloc(nullptr, 0, nullptr, 0), nullptr);
  char* block = static_cast<char*>(kernel->ReAlloc(nullptr, 16, nullptr, 0));
  block = static_cast<char*>(kernel->ReAlloc(strcpy(block, "content"), 100000, nullptr, 0));
  EXPECT_STREQ(block, "content");
  kernel->Free(block, nullptr, 0);
}

TEST(PLMem, WithoutAKernelThereIsNoMemory) {
  char place[16];
  for (const auto& family : kFamilies) {
    EXPECT_EQ(family.allocate(), nullptr);
    family.free(place + 8);
  }
}
