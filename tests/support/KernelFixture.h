// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_KERNELFIXTURE_H
#define IPL_TESTS_SUPPORT_KERNELFIXTURE_H

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>

/// A kernel that runs for a scope.
struct RunningKernel {
  RunningKernel() {
    EXPECT_EQ(IPLKernel::GetKernel(), nullptr) << "an earlier case left its kernel behind";
    kernel = static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule());
    IPLModule_IPLKernel_InitializeKernel(0, nullptr);
  }
  ~RunningKernel() {
    IPLModule_IPLKernel_UnloadModule(kernel);
    EXPECT_EQ(IPLKernel::GetKernel(), nullptr);
  }
  RunningKernel(const RunningKernel&) = delete;
  RunningKernel& operator=(const RunningKernel&) = delete;

  IPLKernel* kernel = nullptr;
};

/// A running kernel around each case. What a derived fixture makes with it ends before it.
class KernelFixture : public testing::Test, protected RunningKernel {};

#endif  // IPL_TESTS_SUPPORT_KERNELFIXTURE_H
