// SPDX-License-Identifier: Apache-2.0
// Two modules in one library, which print what happens to them. Reporter also prints the command line and reports each
// number behind "--" as the status of a work of its own; Hanger never leaves its unload entry.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <ipl/IPLHost.h>

IPL_DECLARE_MODULE(Reporter);
IPL_DECLARE_MODULE(Hanger);

static IPLKernel* s_pKernel;
static IPLHost* s_pHost;
static IPLModule s_modules[2];

void IPLModule_PLModule_PutKernel(IPLKernel* kernel) {
  s_pKernel = kernel;
  setvbuf(stdout, nullptr, _IOLBF, 0);
}

IPLModule* IPLModule_Reporter_ModuleLoad() {
  s_pHost = static_cast<IPLHost*>(s_pKernel->AcquireModule("IPLHost"));
  bool isStatus = false;
  for (int i = 1; i < s_pKernel->GetArgc(); ++i) {
    const char* argument = s_pKernel->GetArgv()[i];
    std::printf("[%s]", argument);
    if (isStatus) {
      s_pHost->BeginWork();
      s_pHost->EndWork(std::atoi(argument));
    }
    isStatus = isStatus || std::strcmp(argument, "--") == 0;
  }
  std::puts("\nReporter loaded");
  return &s_modules[0];
}
void IPLModule_Reporter_ModuleUnload(IPLModule*) {
  std::puts("Reporter unloaded");
  s_pKernel->ReleaseModule(s_pHost);
}

IPLModule* IPLModule_Hanger_ModuleLoad() { return &s_modules[1]; }
void IPLModule_Hanger_ModuleUnload(IPLModule*) {
  std::puts("Hanger unloading");
  s_pKernel->CreateEvent(true)->Wait(IPLKernel::Time::Forever());
}
