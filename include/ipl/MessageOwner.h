// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MESSAGEOWNER_H
#define IPL_MESSAGEOWNER_H

#include <ipl/IPLKernel.h>

/// @file
/// An owner of a received message.

namespace ipl {

/// Owns a message that was taken out of a queue; its members mean what those of std::unique_ptr mean. Giving it back,
/// with MessageQueue::ReleaseMessage, lets the sender of a sent message go on. It does not give back what the message's
/// data points to. The queue lives as long as the message is owned. [owner] Takes no queue's lock.
class MessageOwner {
 public:
  /// An empty owner.
  IPL_ALWAYS_INLINE MessageOwner() noexcept : m_pMessage(nullptr), m_pQueue(nullptr) {}
  /// Takes over a message that was received from queue, or taken out of it; null is accepted.
  IPL_ALWAYS_INLINE MessageOwner(IPLKernel::Message* message, IPLKernel::MessageQueue& queue) noexcept
      : m_pMessage(message), m_pQueue(&queue) {}
  /// Takes over what other owns, which becomes empty.
  IPL_ALWAYS_INLINE MessageOwner(MessageOwner&& other) noexcept
      : m_pMessage(other.release()), m_pQueue(other.m_pQueue) {}
  /// Gives back what this owns, then takes over what other owns, which becomes empty. Assigning to itself does nothing.
  IPL_ALWAYS_INLINE MessageOwner& operator=(MessageOwner&& other) noexcept {
    if (this != &other) {
      reset();
      m_pMessage = other.release();
      m_pQueue = other.m_pQueue;
    }
    return *this;
  }
  MessageOwner(const MessageOwner&) = delete;
  MessageOwner& operator=(const MessageOwner&) = delete;
  /// Gives the message back, if there is one.
  IPL_ALWAYS_INLINE ~MessageOwner() { reset(); }

  /// Returns the message, null if there is none. It stays owned.
  IPL_ALWAYS_INLINE IPLKernel::Message* get() const noexcept { return m_pMessage; }
  /// Gives up the ownership. Returns the message, null if there is none; the caller gives it back from now on.
  IPL_ALWAYS_INLINE IPLKernel::Message* release() noexcept {
    IPLKernel::Message* const message = m_pMessage;
    m_pMessage = nullptr;
    return message;
  }
  /// Gives the message back, if there is one.
  IPL_ALWAYS_INLINE void reset() noexcept {
    IPLKernel::Message* const message = release();
    if (message != nullptr) {
      m_pQueue->ReleaseMessage(message);
    }
  }
  /// Returns whether there is a message.
  IPL_ALWAYS_INLINE explicit operator bool() const noexcept { return m_pMessage != nullptr; }
  /// Requires a message.
  IPL_ALWAYS_INLINE IPLKernel::Message* operator->() const noexcept { return m_pMessage; }

 private:
  IPLKernel::Message* m_pMessage;     // owned
  IPLKernel::MessageQueue* m_pQueue;  // not owned
};

/// Receives from a queue. timeout: as for Event::Wait. Returns the message; an empty owner where MessageQueue::Receive
/// returns null, with the error that it stores. [any thread] [blocks] Takes the queue's lock.
IPL_ALWAYS_INLINE MessageOwner Receive(IPLKernel::MessageQueue& queue,
                                       IPLKernel::Time timeout = IPLKernel::Time::Forever()) {
  return MessageOwner(queue.Receive(timeout), queue);
}

}  // namespace ipl

#endif  // IPL_MESSAGEOWNER_H
