// SPDX-License-Identifier: Apache-2.0
// A host that only starts and stops a kernel.
#include <ipl/KernelEntry.h>

int main(int, char** argv) {
  IPLModule* kernel = IPLModule_IPLKernel_LoadModule();
  IPLModule_IPLKernel_InitializeKernel(1, const_cast<const char**>(argv));
  IPLModule_IPLKernel_UnloadModule(kernel);
  return 0;
}
