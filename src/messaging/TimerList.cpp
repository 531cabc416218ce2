// SPDX-License-Identifier: Apache-2.0
#include "messaging/TimerList.h"

#include <algorithm>

namespace TimerList {

namespace {

bool FiresBefore(const TimerRecord* left, const TimerRecord* right) { return left->fireTime < right->fireTime; }

// Returns where the records that are due end; those from low on are in order.
unsigned long CountDueFrom(const PLArray<TimerRecord*>& list, unsigned long low, IPLKernel::Time now) {
  unsigned long high = list.GetSize();
  while (low < high) {
    const unsigned long middle = low + (high - low) / 2;
    if (list[middle]->fireTime <= now) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

// Removes count entries from first on and closes the gap once.
void RemoveRange(PLArray<TimerRecord*>& list, unsigned long first, unsigned long count) {
  if (count == 0) {
    return;
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  const unsigned long newSize = list.GetSize() - count;
  kernel->memmove(&list[first], &list[first] + count, (newSize - first) * sizeof(TimerRecord*));
  kernel->memset(&list[first] + (newSize - first), 0, count * sizeof(TimerRecord*));
  list.SetSize(newSize);
}

}  // namespace

bool Insert(PLArray<TimerRecord*>& list, TimerRecord* record) {
  const unsigned long oldSize = list.GetSize();
  list.InsertAt(CountDue(list, record->fireTime), record);
  return list.GetSize() != oldSize;
}

void RemoveFront(PLArray<TimerRecord*>& list, unsigned long count) { RemoveRange(list, 0, count); }

void RearmFirst(PLArray<TimerRecord*>& list) {
  TimerRecord* record = list[0];
  const unsigned long end = CountDueFrom(list, 1, record->fireTime);
  IPLKernel::GetKernel()->memmove(&list[0], &list[0] + 1, (end - 1) * sizeof(TimerRecord*));
  list[end - 1] = record;
}

unsigned long CountDue(const PLArray<TimerRecord*>& list, IPLKernel::Time now) { return CountDueFrom(list, 0, now); }

void Rearm(PLArray<TimerRecord*>& list, unsigned long removed, unsigned long kept) {
  RemoveRange(list, kept, removed - kept);
  TimerRecord** begin = &list[0];
  TimerRecord** end = begin + list.GetSize();
  std::stable_sort(begin, begin + kept, FiresBefore);
  // What was pending goes before what is inserted with the same fire time.
  TimerRecord** inserted = std::rotate(begin, begin + kept, end);
  std::inplace_merge(begin, inserted, end, FiresBefore);
}

// From both ends: the next to fire and the last are found at once.
unsigned long Find(const PLArray<TimerRecord*>& list, uint32_t timerID) {
  unsigned long high = list.GetSize();
  for (unsigned long low = 0; low < high; ++low) {
    if (list[low]->timerID == timerID) {
      return low;
    }
    if (list[--high]->timerID == timerID) {
      return high;
    }
  }
  return list.GetSize();
}

}  // namespace TimerList
