// SPDX-License-Identifier: Apache-2.0
// Slots 33 and 34: message queues.
#include "foundation/TrackedMemory.h"
#include "kernel/IPLKernelImpl.h"
#include "messaging/KernelMessageQueue.h"

IPLKernel::MessageQueue* IPLKernelImpl::CreateMessageQueue() {
  if (!KernelMessageQueue::IsInitialized()) {
    return nullptr;
  }
  TrackedPtr<KernelMessageQueue> queue = MakeTracked<KernelMessageQueue>();
  if (queue == nullptr || !queue->IsUsable()) {
    return nullptr;
  }
  return queue.release();
}

void IPLKernelImpl::DestroyMessageQueue(MessageQueue* queue) { PLTypes_ScalarDelete(queue, nullptr, 0); }
