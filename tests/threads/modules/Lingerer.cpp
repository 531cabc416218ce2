// SPDX-License-Identifier: Apache-2.0
#include "Lingerer.h"

#include <pthread.h>

IPL_DECLARE_MODULE(Lingerer);

namespace {

IPLKernel* s_pKernel = nullptr;
Lingerer s_module;

pthread_key_t s_key;

// The destructor of thread-specific data is code of this module that runs when the thread has left the kernel.
void Linger(IPLKernel::Thread*, void*) {
  pthread_setspecific(s_key, &s_module);
  s_module.go->Wait(IPLKernel::Time::Forever());
  s_module.go = nullptr;
}
void Clean(IPLKernel::Thread*, void* module) { static_cast<Lingerer*>(module)->cleaned = true; }

}  // namespace

void IPLModule_PLModule_PutKernel(IPLKernel* kernel) {
  s_pKernel = kernel;
  pthread_key_create(&s_key, [](void*) {});
}

IPLModule* IPLModule_Lingerer_ModuleLoad() {
  s_module.go = s_pKernel->CreateEvent(true);
  s_module.thread = s_pKernel->CreateThread();
  s_module.thread->Run("Lingerer", Linger, &s_module);
  return &s_module;
}

void IPLModule_Lingerer_ModuleUnload(IPLModule*) { s_module.thread->Detach(Clean); }
