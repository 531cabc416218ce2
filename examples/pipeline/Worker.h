// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_PIPELINE_WORKER_H
#define IPL_EXAMPLES_PIPELINE_WORKER_H

#include <ipl/IPLKernel.h>

namespace pipeline {

/// What is done with the messages of a Worker. data is as the message's sender gave it.
class MessageHandler {
 public:
  /// On the worker's thread, message by message.
  virtual void Handle(unsigned long id, void* data) = 0;
  /// On the thread that stops the worker: a message that will not be handled. What it owns is freed here.
  virtual void Discard(unsigned long id, void* data) = 0;

 protected:
  ~MessageHandler() = default;
};

/// A kernel thread that receives from a queue of its own until it is stopped.
class Worker {
 public:
  Worker(IPLKernel* kernel, MessageHandler* handler) : m_pKernel(kernel), m_pHandler(handler) {}
  ~Worker() { Stop(); }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Returns false if memory is exhausted or the thread cannot be started.
  bool Start(const char* name);
  /// Ends the thread when it is through with the message that it is at. The queue stays: whoever has timers for it
  /// clears them now, before Stop.
  void Halt();
  /// Halts, discards what waits in the queue, and gives everything back. Nobody may send or post any more. To be called
  /// before the handler is destroyed.
  void Stop();

  /// Posts a message. Returns false if memory is exhausted: then the caller still owns data.
  bool Post(unsigned long id, void* data);
  IPLKernel::MessageQueue* GetQueue() const { return m_pQueue; }

 private:
  bool PrepareStopMessage();
  void PutStopMessage();
  void ReceiveUntilStopped();

  IPLKernel* const m_pKernel;
  MessageHandler* const m_pHandler;
  IPLKernel::MessageQueue* m_pQueue = nullptr;   // owned
  IPLKernel::Thread* m_pThread = nullptr;        // owned
  IPLKernel::Message* m_pStopMessage = nullptr;  // owned until it is in the queue; set before the thread runs
  bool m_bRunning = false;                       // used by the owner's thread alone
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_PIPELINE_WORKER_H
