// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNELENTRY_H
#define IPL_KERNELENTRY_H

#include <ipl/IPLModule.h>
#include <ipl/PLExport.h>

/// @file
/// The three entry symbols of libIPLKernel.so, which a host calls in this order, from one thread, before any module is
/// used and after all modules are done. [owner] They take no lock.
///
/// A host that opens the library at run time does so with RTLD_NOW | RTLD_GLOBAL, resolves these names with dlsym and
/// converts them to the pointer types below.
///
/// The library is never unmapped once it is loaded (it is linked with -z nodelete): a thread that has just ended
/// returns through its code. Closing it is harmless, and the kernel can be created again.
extern "C" {

/// Makes the kernel object, or returns the one that exists. Never null. The object lives in static storage of the
/// library; it is an IPLKernel.
IPL_API IPLModule* IPLModule_IPLKernel_LoadModule(void);

/// Starts the kernel: records the command line, reads its "--modulemap" options, starts the services.
/// argv: not copied; must stay valid until the kernel is unloaded. Null entries are skipped.
/// Follows IPLModule_IPLKernel_LoadModule. A second call before the kernel was unloaded is ignored.
IPL_API void IPLModule_IPLKernel_InitializeKernel(int argc, const char** argv);

/// Stops the services and destroys the kernel object. Does nothing when module is not the kernel object.
/// Release all modules first: those still acquired are neither unloaded nor closed. Waits for threads that are just
/// ending, detached ones and their cleanups too, not for threads whose procedure still runs.
IPL_API void IPLModule_IPLKernel_UnloadModule(IPLModule* module);

}  // extern "C"

/// The type of IPLModule_IPLKernel_LoadModule.
typedef IPLModule* (*IPLKernelLoadModuleEntry)(void);
/// The type of IPLModule_IPLKernel_InitializeKernel.
typedef void (*IPLKernelInitializeEntry)(int argc, const char** argv);
/// The type of IPLModule_IPLKernel_UnloadModule.
typedef void (*IPLKernelUnloadModuleEntry)(IPLModule* module);

#endif  // IPL_KERNELENTRY_H
