// SPDX-License-Identifier: Apache-2.0
// Slots 5 to 7 and 11 to 14: threads, mutexes and events.
#include "foundation/TrackedMemory.h"
#include "kernel/IPLKernelImpl.h"
#include "threads/KernelEvent.h"
#include "threads/KernelMutex.h"
#include "threads/KernelThread.h"

IPLKernel::Thread* IPLKernelImpl::CreateThread() { return MakeTracked<KernelThread>().release(); }

void IPLKernelImpl::DestroyThread(Thread* thread) {
  auto* kernelThread = static_cast<KernelThread*>(thread);
  if (kernelThread == nullptr) {
    return;
  }
  if (kernelThread->IsRunning()) {
    // The run goes on and the object ends with it; an object that was detached before does so anyway.
    thread->Detach(nullptr);
    return;
  }
  PLTypes_ScalarDelete(kernelThread, nullptr, 0);
}

IPLKernel::Thread* IPLKernelImpl::GetCurrentThread() { return KernelThread::GetCurrentThread(); }

IPLKernel::Mutex* IPLKernelImpl::CreateMutex() { return MakeTracked<KernelMutex>().release(); }

void IPLKernelImpl::DestroyMutex(Mutex* mutex) { PLTypes_ScalarDelete(mutex, nullptr, 0); }

IPLKernel::Event* IPLKernelImpl::CreateEvent(bool manualReset) {
  return MakeTracked<KernelEvent>(manualReset).release();
}

void IPLKernelImpl::DestroyEvent(Event* event) { PLTypes_ScalarDelete(event, nullptr, 0); }
