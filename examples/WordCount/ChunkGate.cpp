// SPDX-License-Identifier: Apache-2.0
#include "WordCount/ChunkGate.h"

#include <ipl/ScopedLock.h>

namespace pipeline {

void ChunkGate::Enter() {
  while (!TryEnter()) {
    m_room->Wait(IPLKernel::Time::Forever());
  }
}

bool ChunkGate::TryEnter() {
  const ipl::ScopedLock guard(*m_mutex);
  if (m_inside < kMaxChunks) {
    ++m_inside;
    return true;
  }
  // Cleared with the mutex held: a Leave that makes room sets it afterwards, before or during the wait.
  m_room->Clear();
  return false;
}

void ChunkGate::Leave() {
  const ipl::ScopedLock guard(*m_mutex);
  --m_inside;
  m_room->Set();
}

}  // namespace pipeline
