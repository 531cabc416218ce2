// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLArray.h>

#include <algorithm>
#include <random>

#include "support/AllocControl.h"
#include "support/CallWatch.h"
#include "support/KernelFixture.h"

using PLArrayTest = KernelFixture;

/// The other branch of the template: elements are assigned one by one.
struct AssignedArray : PLArray<long> {
  AssignedArray() { m_bPlainData = false; }
};

/// What an array holds, its spare slots included.
struct Model {
  void SetSize(size_t count) {
    if (count > slots.size()) {
      const size_t step = 2 * slots.size();
      slots.resize(size);  // what lies behind the elements is cleared when the buffer moves
      slots.resize(step * (count / step + 1));
    }
    size = count;
  }
  void InsertAt(size_t index, long value) {
    const size_t oldSize = size;
    SetSize(std::max(index, size) + 1);
    if (index < oldSize) {
      std::copy_backward(&slots[index], &slots[oldSize], &slots[oldSize] + 1);
    }
    slots[index] = value;
  }
  void RemoveAt(size_t index) {
    if (index < size) {
      std::copy(&slots[index + 1], &slots[0] + size, &slots[index]);
      slots[--size] = 0;
    }
  }

  std::vector<long> slots = std::vector<long>(8);
  size_t size = 0;
};

/// Random operations. Sizes go up and down, so that stale slots come to light, and inserted elements of the array
/// itself meet full buffers.
template <typename Array>
void CompareWithModel(IPLKernel* kernel, bool movesThroughKernel) {
  long moves = 0;
  const CallWatch<44, 45> watch(kernel, [&moves](unsigned) { ++moves; });
  std::minstd_rand random(1);
  Array array;
  Model model;
  for (long step = 1; step <= 10000; ++step) {
    const size_t index = random() % (model.size + 3);
    const unsigned choice = random() % 32;
    if (choice < 3) {
      const size_t size = choice == 0 ? index : model.size + 2;
      array.SetSize(size);
      model.SetSize(size);
    } else if (choice < 14) {
      array.RemoveAt(index);
      model.RemoveAt(index);
    } else {
      const long* value = choice < 20 && model.size != 0 ? &array[random() % model.size] : &step;
      const size_t place = choice % 2 == 0 ? index : model.size;
      model.InsertAt(place, *value);
      choice % 2 == 0 ? array.InsertAt(place, *value) : array.Append(*value);
    }
    ASSERT_EQ(array.GetCapacity(), model.slots.size()) << step;
    ASSERT_EQ(std::vector<long>(&array[0], &array[0] + array.GetSize()),
              std::vector<long>(&model.slots[0], &model.slots[0] + model.size))
        << step;
  }
  EXPECT_EQ(moves != 0, movesThroughKernel);
}

TEST_F(PLArrayTest, DoesWhatItsModelDoes) { CompareWithModel<PLArray<long>>(kernel, true); }
TEST_F(PLArrayTest, DoesWhatItsModelDoesElementByElement) { CompareWithModel<AssignedArray>(kernel, false); }

TEST_F(PLArrayTest, AFailedGrowthChangesNothing) {
  AllocControl memory(kernel);
  PLArray<long> array;
  array.SetSize(8);
  array[7] = 7;
  memory.FailAfter(0);
  array.Append(9);
  array.InsertAt(0, 9);
  array.InsertAt(100, 9);
  array.SetSize(9);
  EXPECT_EQ(memory.Failures(), 4);
  for (unsigned long size : {ULONG_MAX, ULONG_MAX - 1, 0xFFFFFFFFUL, 0x80000000UL}) {
    array.SetSize(size);
    array.InsertAt(size, 9);
    array.RemoveAt(size);
  }
  EXPECT_EQ(memory.Failures(), 4) << "what does not fit 32 bits is not asked for";
  EXPECT_EQ(array.GetSize(), 8U);
  EXPECT_EQ(array.GetCapacity(), 8U);
  EXPECT_EQ(array[7], 7);

  PLArray<long> late;  // its first 8 places could not be had
  late.RemoveAt(0);
  late.Append(1);
  EXPECT_EQ(late.GetSize() + late.GetCapacity(), 0U);
  memory.FailAfter(memory.kNever);
  late.Append(5);
  EXPECT_EQ(late.GetCapacity(), 1U);
  EXPECT_EQ(late[0], 5);
  array.SetSize(7);
  array.SetSize(9);
  EXPECT_EQ(array[7], 0) << "a new buffer brings no old values back";
  EXPECT_EQ(memory.lastAlloc.size, 16 * sizeof(long) + 8);
  array.SetSize(32);
  EXPECT_EQ(memory.lastAlloc.size, 64 * sizeof(long) + 8);
  EXPECT_EQ(memory.Held(), 2) << "buffers that were outgrown are given back";
}
