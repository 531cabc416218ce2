// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_MODULEFILE_H
#define IPL_BENCH_MODULEFILE_H

/// The module of these measurements, which lies beside the kernel library. Its symbols are the three entries.
constexpr const char* kModuleName = "BenchModule";
constexpr const char* kModuleFile = IPL_BENCH_MODULE;
constexpr const char* kModuleEntries[] = {"IPLModule_PLModule_PutKernel", "IPLModule_BenchModule_ModuleLoad",
                                          "IPLModule_BenchModule_ModuleUnload"};

#endif  // IPL_BENCH_MODULEFILE_H
