// SPDX-License-Identifier: Apache-2.0
// The module "Crash": reads through a null pointer when "--crash" stands behind "--", to show the report that
// iplhost --fault-handler makes of it.
#include <stdio.h>

#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>

#include "pipeline/Arguments.h"

IPL_DECLARE_MODULE(Crash);

namespace {

IPLKernel* s_pKernel = nullptr;
IPLModule s_module;

/// The pointer is volatile so that the compiler cannot know what it is; the sanitizers are kept out because they would
/// end the process in their own way.
__attribute__((noinline, no_sanitize("address", "thread", "undefined"))) int ReadThroughNull() {
  const int* volatile pointer = nullptr;
  return *pointer;  // NOLINT(clang-analyzer-core.NullDereference): that is what it is for
}

bool IsCrashAskedFor() {
  pipeline::Arguments arguments(s_pKernel);
  while (arguments.Next()) {
    if (arguments.IsOption("--crash")) {
      return true;
    }
  }
  return false;
}

}  // namespace

void IPLModule_PLModule_PutKernel(IPLKernel* kernel) { s_pKernel = kernel; }

IPLModule* IPLModule_Crash_ModuleLoad() {
  if (IsCrashAskedFor()) {
    printf("%d\n", ReadThroughNull());
  }
  IPLHost* host = static_cast<IPLHost*>(s_pKernel->AcquireModule("IPLHost"));
  if (host == nullptr) {
    return nullptr;
  }
  fprintf(stderr, "Crash: nothing to do without '--crash' behind '--'\n");
  host->BeginWork();
  host->EndWork(2);
  s_pKernel->ReleaseModule(host);
  return &s_module;
}

void IPLModule_Crash_ModuleUnload(IPLModule* /*module*/) {}
