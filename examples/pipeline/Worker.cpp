// SPDX-License-Identifier: Apache-2.0
#include "pipeline/Worker.h"

#include <ipl/ScopedLock.h>

namespace pipeline {

bool Worker::Start(const char* name) {
  m_pQueue = m_pKernel->CreateMessageQueue();
  m_pThread = m_pKernel->CreateThread();
  if (m_pQueue == nullptr || m_pThread == nullptr || !PrepareStopMessage()) {
    return false;
  }
  m_bRunning = m_pThread->Run(
      name, [](IPLKernel::Thread*, void* worker) { static_cast<Worker*>(worker)->ReceiveUntilStopped(); }, this);
  return m_bRunning;
}

/// Stopping must not fail for want of memory, so its message is made at the start and taken aside.
bool Worker::PrepareStopMessage() {
  const ipl::ScopedLock guard(*m_pQueue);
  m_pQueue->Post(0, nullptr);
  if (m_pQueue->GetLength() == 0) {
    return false;
  }
  m_pStopMessage = m_pQueue->GetAt(0);
  m_pQueue->RemoveAt(0);
  return true;
}

/// Puts the message in front of all others. A long queue may have to grow for it, which fails when memory is exhausted;
/// but the thread takes message after message out, so there is room soon.
void Worker::PutStopMessage() {
  for (;;) {
    {
      const ipl::ScopedLock guard(*m_pQueue);
      const unsigned long length = m_pQueue->GetLength();
      m_pQueue->InsertAt(0, m_pStopMessage);
      if (m_pQueue->GetLength() > length) {
        return;
      }
    }
    m_pThread->YieldCPU();
  }
}

void Worker::Halt() {
  if (m_bRunning) {
    PutStopMessage();
    m_pThread->WaitUntilFinished(IPLKernel::Time::Forever());
    m_bRunning = false;
  }
}

void Worker::Stop() {
  Halt();
  if (m_pQueue != nullptr) {
    while (IPLKernel::Message* message = m_pQueue->Receive(0)) {
      m_pHandler->Discard(message->GetID(), message->GetData());
      m_pQueue->ReleaseMessage(message);
    }
    if (m_pStopMessage != nullptr) {
      m_pQueue->ReleaseMessage(m_pStopMessage);
      m_pStopMessage = nullptr;
    }
  }
  m_pKernel->DestroyThread(m_pThread);
  m_pThread = nullptr;
  m_pKernel->DestroyMessageQueue(m_pQueue);
  m_pQueue = nullptr;
}

bool Worker::Post(unsigned long id, void* data) {
  // Post tells nothing, but while the lock is held nobody else changes the length.
  const ipl::ScopedLock guard(*m_pQueue);
  const unsigned long length = m_pQueue->GetLength();
  m_pQueue->Post(id, data);
  return m_pQueue->GetLength() > length;
}

void Worker::ReceiveUntilStopped() {
  for (;;) {
    IPLKernel::Message* message = m_pQueue->Receive(IPLKernel::Time::Forever());
    if (message == m_pStopMessage) {
      return;  // Stop releases it
    }
    if (message != nullptr) {
      m_pHandler->Handle(message->GetID(), message->GetData());
      m_pQueue->ReleaseMessage(message);
    }
  }
}

}  // namespace pipeline
