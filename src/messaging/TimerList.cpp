// SPDX-License-Identifier: Apache-2.0
#include "messaging/TimerList.h"

namespace TimerList {

namespace {

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

void Move(PLArray<TimerRecord*>& list, unsigned long to, unsigned long from, unsigned long count) {
  if (count != 0) {
    IPLKernel::GetKernel()->memmove(&list[to], &list[from], count * sizeof(TimerRecord*));
  }
}

// Of two ordered chains makes one; what is in the first goes before what is in the second with the same fire time.
TimerRecord* Merge(TimerRecord* first, TimerRecord* second) {
  TimerRecord* merged = nullptr;
  TimerRecord** link = &merged;
  while (first != nullptr && second != nullptr) {
    TimerRecord*& earlier = second->fireTime < first->fireTime ? second : first;
    *link = earlier;
    link = &earlier->next;
    earlier = earlier->next;
  }
  *link = first != nullptr ? first : second;
  return merged;
}

// Timers of one period are, which many of those that fire together have.
bool IsInOrder(const TimerRecord* chain) {
  while (chain != nullptr && chain->next != nullptr && chain->fireTime <= chain->next->fireTime) {
    chain = chain->next;
  }
  return chain == nullptr || chain->next == nullptr;
}

// Takes count records, at least one, off the front of a chain and returns them in order. A merge sort, which goes
// log2(count) calls deep.
TimerRecord* TakeInOrder(TimerRecord*& chain, unsigned long count) {
  if (count == 1) {
    TimerRecord* record = chain;
    chain = record->next;
    record->next = nullptr;
    return record;
  }
  TimerRecord* first = TakeInOrder(chain, count / 2);
  return Merge(first, TakeInOrder(chain, count - count / 2));
}

}  // namespace

bool Insert(PLArray<TimerRecord*>& list, TimerRecord* record) {
  const unsigned long oldSize = list.GetSize();
  list.InsertAt(CountDue(list, record->fireTime), record);
  return list.GetSize() != oldSize;
}

void RemoveFront(PLArray<TimerRecord*>& list, unsigned long count) { Rearm(list, count, nullptr, 0); }

void RearmFirst(PLArray<TimerRecord*>& list) {
  TimerRecord* record = list[0];
  const unsigned long end = CountDueFrom(list, 1, record->fireTime);
  Move(list, 0, 1, end - 1);
  list[end - 1] = record;
}

unsigned long CountDue(const PLArray<TimerRecord*>& list, IPLKernel::Time now) { return CountDueFrom(list, 0, now); }

// Each record of the chain takes a place that was freed; what is pending before it moves to the front for that.
void Rearm(PLArray<TimerRecord*>& list, unsigned long removed, TimerRecord* chain, unsigned long count) {
  unsigned long to = 0;
  unsigned long from = removed;
  TimerRecord* record = IsInOrder(chain) ? chain : TakeInOrder(chain, count);
  for (; record != nullptr; record = record->next) {
    const unsigned long end = CountDueFrom(list, from, record->fireTime);
    Move(list, to, from, end - from);
    to += end - from;
    from = end;
    list[to++] = record;
  }
  const unsigned long rest = list.GetSize() - from;
  Move(list, to, from, rest);
  to += rest;
  IPLKernel::GetKernel()->memset(&list[0] + to, 0, (list.GetSize() - to) * sizeof(TimerRecord*));
  list.SetSize(to);
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
