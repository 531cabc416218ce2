// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MESSAGING_TIMERLIST_H
#define IPL_MESSAGING_TIMERLIST_H

#include <stdint.h>

#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>

#include "foundation/TrackedMemory.h"

/// One pending timer.
struct TimerRecord {
  IPLKernel::Time fireTime;        // kernel time or GMT, by the list that holds it
  IPLKernel::Time interval;        // the period
  IPLKernel::MessageQueue* queue;  // not owned
  uint32_t timerID;
  bool periodic;  // re-armed after it fired
  // Behind the fields of the contract:
  TimerRecord* next = nullptr;  // of a chain of records that are to be re-armed
};

/// Operations on a list of timers, ascending by fire time; equal fire times keep the order of insertion. A list does
/// not own its records.
namespace TimerList {

/// Inserts behind all records with the same fire time. Returns false if memory is exhausted.
bool Insert(PLArray<TimerRecord*>& list, TimerRecord* record);

/// Returns how many records at the front have a fire time of now or before.
unsigned long CountDue(const PLArray<TimerRecord*>& list, IPLKernel::Time now);

/// Moves the first record, whose fire time was set anew, behind all records with that fire time or an earlier one.
void RearmFirst(PLArray<TimerRecord*>& list);

/// Removes the first count records.
void RemoveFront(PLArray<TimerRecord*>& list, unsigned long count);

/// Removes the first removed records and inserts those of a chain, in its order, each as Insert does. The chain ends
/// with null and has count records, not more than removed. Needs no memory.
void Rearm(PLArray<TimerRecord*>& list, unsigned long removed, TimerRecord* chain, unsigned long count);

/// Returns the index of the record with this identifier, which only one has, or GetSize() if there is none.
unsigned long Find(const PLArray<TimerRecord*>& list, uint32_t timerID);

}  // namespace TimerList

#endif  // IPL_MESSAGING_TIMERLIST_H
