// SPDX-License-Identifier: Apache-2.0
// The module MODULE_NAME with the first ENTRY_COUNT entries. They call the program's function whose address is in the
// environment and leave all they do to it; the load entry returns what it returns.
#include <stdint.h>
#include <stdlib.h>

#include <ipl/IPLKernel.h>

#define EXPAND(MACRO, ...) MACRO(__VA_ARGS__)
#define TEXT(NAME) #NAME
#define ENTRY(NAME, ACTION) IPLModule_##NAME##_Module##ACTION
EXPAND(IPL_DECLARE_MODULE, MODULE_NAME);

[[maybe_unused]] static IPLModule s_object;

[[maybe_unused]] static IPLModule* Call(char entry, IPLModule* object) {
  using Hook = IPLModule* (*)(const char* module, char entry, IPLModule* object);
  const auto address = static_cast<uintptr_t>(strtoull(getenv("IPL_TEST_MODULE_HOOK"), nullptr, 10));
  return reinterpret_cast<Hook>(address)(EXPAND(TEXT, MODULE_NAME), entry, object);
}
#if ENTRY_COUNT > 0
void IPLModule_PLModule_PutKernel(IPLKernel* kernel) { Call('p', kernel); }
#endif
#if ENTRY_COUNT > 1
IPLModule* EXPAND(ENTRY, MODULE_NAME, Load)(void) { return Call('l', &s_object); }
#endif
#if ENTRY_COUNT > 2
void EXPAND(ENTRY, MODULE_NAME, Unload)(IPLModule* module) { Call('u', module); }
#endif
