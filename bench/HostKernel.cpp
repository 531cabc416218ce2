// SPDX-License-Identifier: Apache-2.0
#include <ipl/KernelEntry.h>

#include "Host.h"

int main(int argc, char** argv) {
  IPLModule* kernel = IPLModule_IPLKernel_LoadModule();
  IPLModule_IPLKernel_InitializeKernel(1, const_cast<const char**>(argv));
  IPLModule_IPLKernel_UnloadModule(kernel);
  return EndHost(argc);
}
