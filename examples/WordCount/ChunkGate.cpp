// SPDX-License-Identifier: Apache-2.0
#include "WordCount/ChunkGate.h"

#include "pipeline/Ownership.h"

namespace pipeline {

ChunkGate::~ChunkGate() {
  m_pKernel->DestroyEvent(m_pRoom);
  m_pKernel->DestroyMutex(m_pMutex);
}

void ChunkGate::Enter() {
  while (!TryEnter()) {
    m_pRoom->Wait(IPLKernel::Time::Forever());
  }
}

bool ChunkGate::TryEnter() {
  const LockGuard guard(m_pMutex);
  if (m_inside < kMaxChunks) {
    ++m_inside;
    return true;
  }
  // Cleared with the mutex held: a Leave that makes room sets it afterwards, before or during the wait.
  m_pRoom->Clear();
  return false;
}

void ChunkGate::Leave() {
  const LockGuard guard(m_pMutex);
  --m_inside;
  m_pRoom->Set();
}

}  // namespace pipeline
