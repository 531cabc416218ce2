// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_KERNELFIXTURE_H
#define IPL_TESTS_SUPPORT_KERNELFIXTURE_H

#include <vector>

#include <gtest/gtest.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>

/// A running kernel around each case. A derived fixture that needs its own command line fills m_arguments in its
/// constructor; the texts have to outlive the case.
class KernelFixture : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(IPLKernel::GetKernel(), nullptr) << "an earlier case left its kernel behind";
    kernel = static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule());
    ASSERT_NE(kernel, nullptr);
    m_argc = static_cast<int>(m_arguments.size());
    m_arguments.push_back(nullptr);
    IPLModule_IPLKernel_InitializeKernel(m_argc, m_arguments.data());
  }

  void TearDown() override {
    IPLModule_IPLKernel_UnloadModule(kernel);
    EXPECT_EQ(IPLKernel::GetKernel(), nullptr);
  }

  IPLKernel* kernel = nullptr;
  std::vector<const char*> m_arguments = {"test"};
  int m_argc = 0;
};

#endif  // IPL_TESTS_SUPPORT_KERNELFIXTURE_H
