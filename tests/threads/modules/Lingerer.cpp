// SPDX-License-Identifier: Apache-2.0
#include "Lingerer.h"

IPL_DECLARE_MODULE(Lingerer);

namespace {

IPLKernel* s_pKernel = nullptr;
IPLKernel::Thread* s_pThread = nullptr;
Lingerer s_module;

void Linger(IPLKernel::Thread*, void*) {
  s_module.go->Wait(IPLKernel::Time::Forever());
  s_module.go = nullptr;
}
void Clean(IPLKernel::Thread*, void* module) { static_cast<Lingerer*>(module)->cleaned = true; }

}  // namespace

void IPLModule_PLModule_PutKernel(IPLKernel* kernel) { s_pKernel = kernel; }

IPLModule* IPLModule_Lingerer_ModuleLoad() {
  s_module.go = s_pKernel->CreateEvent(true);
  s_pThread = s_pKernel->CreateThread();
  s_pThread->Run("Lingerer", Linger, &s_module);
  return &s_module;
}

void IPLModule_Lingerer_ModuleUnload(IPLModule*) { s_pThread->Detach(Clean); }
