// SPDX-License-Identifier: Apache-2.0
// A module that costs nothing but its loading.
#include <ipl/IPLKernel.h>

IPL_DECLARE_MODULE(GateModule);

static IPLModule s_module;

void IPLModule_PLModule_PutKernel(IPLKernel*) {}
IPLModule* IPLModule_GateModule_ModuleLoad() { return &s_module; }
void IPLModule_GateModule_ModuleUnload(IPLModule*) {}
