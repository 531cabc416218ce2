// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNELOWNERS_H
#define IPL_KERNELOWNERS_H

#include <ipl/IPLKernel.h>
#include <ipl/Owner.h>

/// @file
/// Owners of what the kernel creates.

/// Owners of what the operations of IPLKernel create, each with the members of ipl::Owner:
///
///   ipl::MutexOwner mutex(kernel->CreateMutex());
///   if (!mutex) ...                              // memory was exhausted
///   mutex->Lock();
///
/// When they give back, the rules of the operation that they call hold: nobody holds the mutex, a queue is empty. Once
/// the kernel object is gone they give nothing back. Messages and timers: MessageOwner.h and TimerOwner.h.
namespace ipl {

/// @cond internal
/// Gives an object to an operation of the kernel.
template <typename T, void (IPLKernel::*operation)(T*)>
struct KernelGiver {
  typedef T Object;
  IPL_ALWAYS_INLINE static void GiveBack(T* object) {
    IPLKernel* const kernel = IPLKernel::GetKernel();
    if (kernel != nullptr) {
      (kernel->*operation)(object);
    }
  }
};
/// @endcond

/// Of CreateMutex. Gives back with DestroyMutex.
typedef Owner<KernelGiver<IPLKernel::Mutex, &IPLKernel::DestroyMutex>> MutexOwner;
/// Of CreateEvent. Gives back with DestroyEvent.
typedef Owner<KernelGiver<IPLKernel::Event, &IPLKernel::DestroyEvent>> EventOwner;
/// Of CreateThread. Gives back with DestroyThread, which waits for nothing: a running thread is detached. An object
/// that was handed over with Detach is to be released. ThreadStart.h has an owner that waits.
typedef Owner<KernelGiver<IPLKernel::Thread, &IPLKernel::DestroyThread>> ThreadOwner;
/// Of CreateMessageQueue. Gives back with DestroyMessageQueue: the queue's timers are cleared and it is empty by then.
typedef Owner<KernelGiver<IPLKernel::MessageQueue, &IPLKernel::DestroyMessageQueue>> QueueOwner;
/// Of CreateStacktrace. Gives back with DestroyStacktrace.
typedef Owner<KernelGiver<IPLKernel::Stacktrace, &IPLKernel::DestroyStacktrace>> StacktraceOwner;

/// @cond internal
/// Gives a block to IPLKernel::Free.
struct MemoryGiver {
  typedef void Object;
  IPL_ALWAYS_INLINE static void GiveBack(void* block) {
    IPLKernel* const kernel = IPLKernel::GetKernel();
    if (kernel != nullptr) {
      kernel->Free(block, nullptr, 0);
    }
  }
};
/// @endcond
/// Of Alloc and ReAlloc: a block of bytes. ReAlloc takes what release() returns. Gives back with Free.
typedef Owner<MemoryGiver> MemoryOwner;

/// @cond internal
/// Gives a module object that is a T to IPLKernel::ReleaseModule.
template <typename T>
struct ModuleGiver {
  typedef T Object;
  IPL_ALWAYS_INLINE static void GiveBack(T* module) {
    IPLKernel* const kernel = IPLKernel::GetKernel();
    if (kernel != nullptr) {
      kernel->ReleaseModule(module);
    }
  }
};
/// @endcond
/// One acquisition of a module whose object is a T. Gives back with ReleaseModule, which may unload the module: nothing
/// of it is used afterwards. [blocks] [running] Holds the module mutex meanwhile.
template <typename T>
using ModuleOwner = Owner<ModuleGiver<T>>;

/// Acquires the module name, whose object is known to be a T, from the library at path; null: where the kernel looks by
/// itself. Returns the acquisition, an empty one where IPLKernel::AcquireModule returns null.
/// [any thread] [blocks] [running] Holds the module mutex, also while the module's entries run.
template <typename T>
IPL_ALWAYS_INLINE ModuleOwner<T> AcquireModule(IPLKernel* kernel, const char* name, const char* path = nullptr) {
  return ModuleOwner<T>(
      static_cast<T*>(path == nullptr ? kernel->AcquireModule(name) : kernel->AcquireModule(name, path)));
}

}  // namespace ipl

#endif  // IPL_KERNELOWNERS_H
