// SPDX-License-Identifier: Apache-2.0
// A module that does nothing.
#include <ipl/IPLKernel.h>

IPL_DECLARE_MODULE(BenchModule);

static IPLModule s_module;

void IPLModule_PLModule_PutKernel(IPLKernel*) {}
IPLModule* IPLModule_BenchModule_ModuleLoad() { return &s_module; }
void IPLModule_BenchModule_ModuleUnload(IPLModule*) {}
