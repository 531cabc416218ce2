// SPDX-License-Identifier: Apache-2.0
#include "messaging/TimerList.h"

#include <algorithm>

namespace TimerList {

namespace {

// Up to this number of records, finding each one's place is cheaper than a merge with the whole list.
constexpr unsigned long kFewRecords = 16;

bool FiresBefore(const TimerRecord* left, const TimerRecord* right) { return left->fireTime < right->fireTime; }

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

unsigned long CountDue(const PLArray<TimerRecord*>& list, IPLKernel::Time now) {
  unsigned long low = 0;
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

void Rearm(PLArray<TimerRecord*>& list, unsigned long removed, unsigned long kept) {
  if (kept <= kFewRecords) {
    TimerRecord* few[kFewRecords];
    for (unsigned long i = 0; i < kept; ++i) {
      few[i] = list[i];
    }
    RemoveRange(list, 0, removed);
    for (unsigned long i = 0; i < kept; ++i) {
      static_cast<void>(Insert(list, few[i]));  // the list was longer before: it has the room
    }
    return;
  }
  RemoveRange(list, kept, removed - kept);
  TimerRecord** begin = &list[0];
  TimerRecord** end = begin + list.GetSize();
  std::stable_sort(begin, begin + kept, FiresBefore);
  // What was pending goes before what is inserted with the same fire time.
  TimerRecord** inserted = std::rotate(begin, begin + kept, end);
  std::inplace_merge(begin, inserted, end, FiresBefore);
}

unsigned long FindLast(const PLArray<TimerRecord*>& list, uint32_t timerID) {
  for (unsigned long i = list.GetSize(); i > 0; --i) {
    if (list[i - 1]->timerID == timerID) {
      return i - 1;
    }
  }
  return list.GetSize();
}

}  // namespace TimerList
