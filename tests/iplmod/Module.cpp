// SPDX-License-Identifier: Apache-2.0
// The module Sample; check_corpus.sh makes faults of it with macros.
#include <ipl/IPLModule.h>

#ifdef USE
extern "C" USE_ATTRIBUTE int USE(void);
int (*ipl_used)(void) = USE;
#endif
#ifdef UNIQUE
inline IPL_API int ipl_count = 0;
int* ipl_counter = &ipl_count;
#endif
#ifdef TEXT_RELOCATION
__asm__(".pushsection .text\n .balign 8\n .quad IPLModule_PLModule_PutKernel\n .popsection");
#endif

extern "C" IPL_API void IPLModule_PLModule_PutKernel(IPLKernel*) {}
LOAD_LINKAGE IPL_API IPLModule* IPLModule_Sample_ModuleLoad(void) { return nullptr; }
extern "C" UNLOAD_EXPORT void UNLOAD(IPLModule*) {}
#ifdef __arm__
// The tables name these; no library of the compiler is linked.
extern "C" void __aeabi_unwind_cpp_pr0() {}
extern "C" void __aeabi_unwind_cpp_pr1() {}
#endif
