// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_WORDCOUNT_CHUNKGATE_H
#define IPL_EXAMPLES_WORDCOUNT_CHUNKGATE_H

#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/PLThreadAnnotations.h>

namespace pipeline {

/// Lets only so many pieces of text be on their way at a time, so that a fast reader does not fill the memory.
class ChunkGate {
 public:
  explicit ChunkGate(IPLKernel* kernel) : m_mutex(kernel->CreateMutex()), m_room(kernel->CreateEvent(true)) {}
  ChunkGate(const ChunkGate&) = delete;
  ChunkGate& operator=(const ChunkGate&) = delete;

  bool IsUsable() const { return m_mutex && m_room; }
  /// Returns when there is room for one more.
  void Enter();
  void Leave();

 private:
  enum { kMaxChunks = 8 };

  bool TryEnter();

  const ipl::MutexOwner m_mutex;
  const ipl::EventOwner m_room;  // set and cleared with the mutex held
  unsigned int m_inside PL_GUARDED_BY(m_mutex) = 0;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_WORDCOUNT_CHUNKGATE_H
