// SPDX-License-Identifier: Apache-2.0
#include "messaging/KernelMessageQueue.h"

#include "foundation/ContractLayout.h"
#include "threads/CancelGuard.h"
#include "threads/KernelEvent.h"
#include "threads/KernelLockGuard.h"
#include "threads/YieldPoint.h"

using KernelMessage = KernelMessageQueue::KernelMessage;

template <>
struct PLContractLayout<KernelMessage> {
  IPL_ASSERT_OFFSET(KernelMessage, m_id, 4);
  IPL_ASSERT_OFFSET(KernelMessage, m_pData, 8);
  IPL_ASSERT_OFFSET(KernelMessage, m_pReplyEvent, 12);
  IPL_ASSERT_SIZE(KernelMessage, 16);
};

template <>
struct PLContractLayout<KernelMessageQueue> {
  IPL_ASSERT_OFFSET(KernelMessageQueue, m_pMutex, 4);
  IPL_ASSERT_OFFSET(KernelMessageQueue, m_pEvent, 8);
  IPL_ASSERT_OFFSET(KernelMessageQueue, m_messages, 12);
  IPL_ASSERT_SIZE(KernelMessageQueue, 32);
};

std::atomic<IPLKernel*> KernelMessageQueue::s_pKernel{nullptr};

void KernelMessageQueue::Initialize(IPLKernel* kernel) { s_pKernel.store(kernel, std::memory_order_release); }

void KernelMessageQueue::Uninitialize() { s_pKernel.store(nullptr, std::memory_order_release); }

bool KernelMessageQueue::IsInitialized() { return s_pKernel.load(std::memory_order_acquire) != nullptr; }

unsigned long KernelMessage::GetID() { return m_id; }

void* KernelMessage::GetData() { return m_pData; }

KernelMessageQueue::KernelMessageQueue() : m_pMutex(nullptr), m_pEvent(nullptr) {
  IPLKernel* kernel = s_pKernel.load(std::memory_order_acquire);
  m_pMutex = kernel->CreateMutex();
  m_pEvent = kernel->CreateEvent(true);
}

KernelMessageQueue::~KernelMessageQueue() {
  IPLKernel* kernel = s_pKernel.load(std::memory_order_acquire);
  if (kernel != nullptr) {
    kernel->DestroyMutex(m_pMutex);
    kernel->DestroyEvent(m_pEvent);
  }
}

bool KernelMessageQueue::IsUsable() {
  KernelLockGuard guard(m_pMutex);
  return m_pMutex != nullptr && m_pEvent != nullptr && m_messages.GetCapacity() != 0;
}

// The interface's capability is this object, the code's is the mutex that belongs to it.
void KernelMessageQueue::Lock() PL_NO_THREAD_SAFETY_ANALYSIS { m_pMutex->Lock(); }
void KernelMessageQueue::Unlock() PL_NO_THREAD_SAFETY_ANALYSIS { m_pMutex->Unlock(); }

void KernelMessageQueue::Send(unsigned long id, void* data) { SendAt(Place::kBack, id, data); }
void KernelMessageQueue::Post(unsigned long id, void* data) { PostAt(Place::kBack, id, data); }
void KernelMessageQueue::SendFront(unsigned long id, void* data) { SendAt(Place::kFront, id, data); }
void KernelMessageQueue::PostFront(unsigned long id, void* data) { PostAt(Place::kFront, id, data); }

void KernelMessageQueue::PostAt(Place place, unsigned long id, void* data) {
  TrackedPtr<KernelMessage> message = MakeTracked<KernelMessage>(id, data);
  if (message != nullptr && Enqueue(place, message.get())) {
    static_cast<void>(message.release());  // it is the queue's, or already its receiver's
  }
}

void KernelMessageQueue::SendAt(Place place, unsigned long id, void* data) {
  IPLKernel* kernel = s_pKernel.load(std::memory_order_acquire);
  TrackedPtr<KernelMessage> message = MakeTracked<KernelMessage>(id, data);
  if (message == nullptr || kernel == nullptr) {
    return;
  }
  IPLKernel::Event* replyEvent = kernel->CreateEvent(true);
  if (replyEvent == nullptr) {
    return;
  }
  message->SetReplyEvent(replyEvent);
  const CancelGuard guard;  // a thread that left would leave its message in the list
  if (Enqueue(place, message.get())) {
    replyEvent->Wait(IPLKernel::Time::Forever());
  }
  // The receiver's last use of the message and of the event was the Set that ended the wait: see ReleaseMessage.
  kernel->DestroyEvent(replyEvent);
}

bool KernelMessageQueue::Enqueue(Place place, KernelMessage* message) {
  KernelEvent* toWake = nullptr;
  {
    KernelLockGuard guard(m_pMutex);
    const unsigned long oldLength = m_messages.GetSize();
    if (place == Place::kBack) {
      m_messages.Append(message);
    } else {
      m_messages.InsertAt(0, message);
    }
    if (m_messages.GetSize() == oldLength) {
      return false;  // no memory for a longer list
    }
    if (oldLength == 0) {
      KernelEvent* event = KernelEvent::From(m_pEvent);
      if (event == nullptr) {
        m_pEvent->Set();
      } else if (event->BeginSet()) {
        toWake = event;
      }
    }
  }
  // Here the message's receiver may have destroyed the queue, but not its event.
  if (toWake != nullptr) {
    toWake->FinishSet();
  }
  return true;
}

// A message that is there is taken without a look at the event. While another thread holds the lock, which it may do
// for long, only the event keeps the time-out.
IPLKernel::Message* KernelMessageQueue::Receive(IPLKernel::Time timeout) {
  if (m_pMutex->TryLock()) {
    KernelMessage* message = TakeFirst();
    m_pMutex->Unlock();
    if (message != nullptr) {
      return message;
    }
  }
  if (!m_pEvent->Wait(timeout)) {
    return nullptr;
  }
  KernelLockGuard guard(m_pMutex);
  KernelMessage* message = TakeFirst();
  if (message == nullptr) {
    m_pEvent->Clear();  // a client that changed the list without its lock may have left it set
  }
  return message;
}

KernelMessage* KernelMessageQueue::TakeFirst() {
  if (m_messages.GetSize() == 0) {
    return nullptr;
  }
  KernelMessage* message = m_messages[0];
  m_messages.RemoveAt(0);
  if (m_messages.GetSize() == 0) {
    m_pEvent->Clear();
  }
  return message;
}

// The sender frees message and event as soon as its wait ends, which Set brings about: the event is read once, before,
// and neither is touched after.
void KernelMessageQueue::ReleaseMessage(IPLKernel::Message* message) {
  auto* kernelMessage = static_cast<KernelMessage*>(message);
  if (kernelMessage == nullptr) {
    return;
  }
  IPLKernel::Event* replyEvent = kernelMessage->GetReplyEvent();
  if (replyEvent == nullptr) {
    PLTypes_ScalarDelete(kernelMessage, nullptr, 0);
    return;
  }
  YieldPoint();
  replyEvent->Set();
  YieldPoint();
}

// The list operations: their caller holds the queue's lock, which it took with Lock.

unsigned long KernelMessageQueue::GetLength() PL_NO_THREAD_SAFETY_ANALYSIS { return m_messages.GetSize(); }

IPLKernel::Message* KernelMessageQueue::GetAt(unsigned long index) PL_NO_THREAD_SAFETY_ANALYSIS {
  return index < m_messages.GetSize() ? m_messages[index] : nullptr;
}

void KernelMessageQueue::SetAt(unsigned long index, IPLKernel::Message* message) PL_NO_THREAD_SAFETY_ANALYSIS {
  if (index < m_messages.GetSize()) {
    m_messages[index] = static_cast<KernelMessage*>(message);
  }
}

void KernelMessageQueue::RemoveAt(unsigned long index) PL_NO_THREAD_SAFETY_ANALYSIS {
  m_messages.RemoveAt(index);
  if (m_messages.GetSize() == 0) {
    m_pEvent->Clear();
  }
}

void KernelMessageQueue::InsertAt(unsigned long index, IPLKernel::Message* message) PL_NO_THREAD_SAFETY_ANALYSIS {
  if (index > m_messages.GetSize()) {
    return;
  }
  m_messages.InsertAt(index, static_cast<KernelMessage*>(message));
  if (m_messages.GetSize() == 1) {
    m_pEvent->Set();
  }
}

void KernelMessageQueue::Append(IPLKernel::Message* message) { InsertAt(GetLength(), message); }

void KernelMessageQueue::RemoveAll() PL_NO_THREAD_SAFETY_ANALYSIS {
  if (m_messages.GetSize() != 0) {
    m_messages.SetSize(0);
    m_pEvent->Clear();
  }
}
