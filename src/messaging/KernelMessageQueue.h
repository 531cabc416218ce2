// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MESSAGING_KERNELMESSAGEQUEUE_H
#define IPL_MESSAGING_KERNELMESSAGEQUEUE_H

#include <atomic>

#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>

#include "foundation/TrackedMemory.h"

/// A list of messages with a lock and an event that is set exactly while the list is not empty.
class KernelMessageQueue final : public IPLKernel::MessageQueue, public TrackedObject {
 public:
  /// The one kind of message that queues hold. A posted one (no reply event) is freed by ReleaseMessage. A sent one
  /// belongs to its sender throughout: ReleaseMessage sets the reply event and the sender frees both.
  class KernelMessage final : public IPLKernel::Message, public TrackedObject {
   public:
    KernelMessage(unsigned long id, void* data) : m_id(id), m_pData(data), m_pReplyEvent(nullptr) {}

    unsigned long GetID() override;
    void* GetData() override;

    // Written by the sender before the message is in a list; the list's lock makes it visible to the receiver.
    void SetReplyEvent(IPLKernel::Event* event) { m_pReplyEvent = event; }
    IPLKernel::Event* GetReplyEvent() const { return m_pReplyEvent; }

   private:
    template <typename>
    friend struct PLContractLayout;

    const unsigned long m_id;
    void* const m_pData;              // not owned, never used
    IPLKernel::Event* m_pReplyEvent;  // owned by the sender of a sent message; null for a posted one
  };

  KernelMessageQueue();
  ~KernelMessageQueue() override;
  KernelMessageQueue(const KernelMessageQueue&) = delete;
  KernelMessageQueue& operator=(const KernelMessageQueue&) = delete;

  /// Returns whether the queue has all that it needs; one that has not is not handed out.
  bool IsUsable();

  void Lock() override PL_ACQUIRE();
  void Unlock() override PL_RELEASE();
  void Send(unsigned long id, void* data) override;
  void Post(unsigned long id, void* data) override;
  void SendFront(unsigned long id, void* data) override;
  void PostFront(unsigned long id, void* data) override;
  IPLKernel::Message* Receive(IPLKernel::Time timeout) override;
  void ReleaseMessage(IPLKernel::Message* message) override;
  unsigned long GetLength() override;
  IPLKernel::Message* GetAt(unsigned long index) override;
  void SetAt(unsigned long index, IPLKernel::Message* message) override;
  void RemoveAt(unsigned long index) override;
  void InsertAt(unsigned long index, IPLKernel::Message* message) override;
  void Append(IPLKernel::Message* message) override;
  void RemoveAll() override;

  /// Hand the kernel to the queues and take it back; called by start-up and shut-down. Queues exist only in between.
  static void Initialize(IPLKernel* kernel);
  static void Uninitialize();
  static bool IsInitialized();

 private:
  template <typename>
  friend struct PLContractLayout;

  enum class Place { kFront, kBack };

  void PostAt(Place place, unsigned long id, void* data);
  void SendAt(Place place, unsigned long id, void* data);
  bool Enqueue(Place place, KernelMessage* message);
  KernelMessage* TakeFirst() PL_REQUIRES(m_pMutex);

  /// Read without a lock by all queues; written by start-up and shut-down, when no queue is in use.
  static std::atomic<IPLKernel*> s_pKernel;

  IPLKernel::Mutex* m_pMutex;  // owned
  IPLKernel::Event* m_pEvent;  // owned; manual reset
  PLArray<KernelMessage*> m_messages PL_GUARDED_BY(m_pMutex);
};

#endif  // IPL_MESSAGING_KERNELMESSAGEQUEUE_H
