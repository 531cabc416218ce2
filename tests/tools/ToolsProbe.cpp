// SPDX-License-Identifier: Apache-2.0
// What the tools are tried on: a process that answers which log messages it would write, or one that crashes.
#include <cstdio>

#include <ipl/KernelEntry.h>
#include <ipl/KernelFaultHandler.h>

#include "support/KernelTable.h"

namespace {

__attribute__((no_sanitize("undefined"))) int ReadNull() {
  const volatile int* volatile nowhere = nullptr;
  return *nowhere;
}

}  // namespace

int main(int argc, char**) {
  if (argc > 1) {
    KernelFaultHandler::GetFaultHandler()->Initialise();
    return ReadNull();
  }
  IPLModule* object = IPLModule_IPLKernel_LoadModule();
  IPLModule_IPLKernel_InitializeKernel(0, nullptr);
  auto* kernel = static_cast<IPLKernel*>(object);
  auto* check = KernelTable(kernel).Original<bool(IPLKernel*, int, int)>(74);
  int category = 0;
  int level = 0;
  while (std::scanf("%d %d", &category, &level) == 2) {
    std::printf("%d\n", check(kernel, category, level) ? 1 : 0);
    std::fflush(stdout);
  }
  IPLModule_IPLKernel_UnloadModule(object);
}
