// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_THREADS_MODULES_LINGERER_H
#define IPL_TESTS_THREADS_MODULES_LINGERER_H

#include <ipl/IPLKernel.h>

/// A module whose thread outlives it.
class Lingerer : public IPLModule {
 public:
  IPLKernel::Event* go = nullptr;  ///< ends the thread; whoever sets it destroys it
  IPLKernel::Thread* thread = nullptr;
  bool cleaned = false;
};

#endif  // IPL_TESTS_THREADS_MODULES_LINGERER_H
