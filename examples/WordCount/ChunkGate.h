// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_WORDCOUNT_CHUNKGATE_H
#define IPL_EXAMPLES_WORDCOUNT_CHUNKGATE_H

#include <ipl/IPLKernel.h>
#include <ipl/PLThreadAnnotations.h>

namespace pipeline {

/// Lets only so many pieces of text be on their way at a time, so that a fast reader does not fill the memory.
class ChunkGate {
 public:
  explicit ChunkGate(IPLKernel* kernel)
      : m_pKernel(kernel), m_pMutex(kernel->CreateMutex()), m_pRoom(kernel->CreateEvent(true)) {}
  ~ChunkGate();
  ChunkGate(const ChunkGate&) = delete;
  ChunkGate& operator=(const ChunkGate&) = delete;

  bool IsUsable() const { return m_pMutex != nullptr && m_pRoom != nullptr; }
  /// Returns when there is room for one more.
  void Enter();
  void Leave();

 private:
  enum { kMaxChunks = 8 };

  bool TryEnter();

  IPLKernel* const m_pKernel;
  IPLKernel::Mutex* const m_pMutex;  // owned
  IPLKernel::Event* const m_pRoom;   // owned; set and cleared with the mutex held
  unsigned int m_inside PL_GUARDED_BY(m_pMutex) = 0;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_WORDCOUNT_CHUNKGATE_H
