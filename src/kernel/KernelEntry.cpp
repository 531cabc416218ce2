// SPDX-License-Identifier: Apache-2.0
#include <ipl/KernelEntry.h>

#include <new>

#include "kernel/IPLKernelImpl.h"
#include "messaging/KernelTimerManager.h"

std::atomic<IPLKernelImpl*> IPLKernelImpl::s_pKernelImpl{nullptr};

namespace {

// The kernel object's place. Nothing counts on its bytes: the constructor sets every field.
alignas(IPLKernelImpl) unsigned char s_kernelStorage[sizeof(IPLKernelImpl)];

}  // namespace

IPLKernel* IPLKernel::GetKernel() { return IPLKernelImpl::s_pKernelImpl.load(std::memory_order_acquire); }

IPLModule* IPLModule_IPLKernel_LoadModule(void) {
  IPLKernelImpl* kernel = IPLKernelImpl::s_pKernelImpl.load(std::memory_order_acquire);
  if (kernel == nullptr) {
    kernel = new (static_cast<void*>(s_kernelStorage)) IPLKernelImpl;
    IPLKernelImpl::s_pKernelImpl.store(kernel, std::memory_order_release);
  }
  return kernel;
}

void IPLModule_IPLKernel_InitializeKernel(int argc, const char** argv) {
  IPLKernelImpl::s_pKernelImpl.load(std::memory_order_acquire)->InitializeKernel(argc, argv);
}

void IPLModule_IPLKernel_UnloadModule(IPLModule* module) {
  IPLKernelImpl* kernel = IPLKernelImpl::s_pKernelImpl.load(std::memory_order_acquire);
  if (module == nullptr || module != kernel) {
    return;
  }
  kernel->UninitializeKernel();
  // The destructor puts a table without operations in place. By then nobody finds the object any more, and whoever was
  // just giving a timer message back is done with it.
  IPLKernelImpl::s_pKernelImpl.store(nullptr, std::memory_order_release);
  KernelTimerManager::AwaitReleases();
  kernel->~IPLKernelImpl();
}
