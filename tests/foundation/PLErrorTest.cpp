// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLError.h>

#include <thread>

#include "support/TestThread.h"

using PLErrorTest = KernelFixture;

static void Expect(const PLError& error, int code, const std::string& name) {
  EXPECT_EQ(error.GetCode(), code);
  EXPECT_EQ(error.GetName(), name);
}

TEST_F(PLErrorTest, KeepsACodeAndAtMost31CharactersOfAName) {
  Expect(PLError(), -1, "Uninitialized");
  Expect(PLError(1, nullptr), 1, "");
  for (size_t length : {0, 31, 32, 40}) {
    PLError assigned;
    assigned = PLError(PLError(7, std::string(length, 'x').c_str()));
    const PLError& self = assigned;
    assigned = self;
    Expect(assigned, 7, std::string(length < 31 ? length : 31, 'x'));
  }
  EXPECT_TRUE(PLError_Timeout == PLError(2, "another name"));
  EXPECT_TRUE(PLError(3, "PLError_Timeout") != PLError_Timeout);
}

TEST_F(PLErrorTest, TheConstantsHaveTheirCodesAndNames) {
  Expect(PLError_OK, 0, "PLError_OK");
  Expect(PLError_NoMemory, 1, "PLError_NoMemory");
  Expect(PLError_Timeout, 2, "PLError_Timeout");
  Expect(PLError_Generic, 3, "PLError_Generic");
  Expect(PLError_NotFound, 4, "PLError_NotFound");
  Expect(PLError_Usage, 5, "PLError_Usage");
  Expect(PLError_InvalidParameters, 6, "PLError_InvalidParameters");
  Expect(kernel->m_ThreadAlreadyRunning, 256, "ThreadAlreadyRunning");
  Expect(kernel->m_ThreadCreationFailure, 257, "ThreadCreationFailure");
  Expect(kernel->m_ThreadCantWaitOnSelf, 258, "ThreadCantWaitOnSelf");
  Expect(kernel->m_ThreadSetPriority, 259, "ThreadSetPriority");
  Expect(kernel->m_ThreadGenericError, 260, "ThreadGenericError");
  Expect(kernel->m_ThreadInvalidParameter, 261, "ThreadInvalidParameter");
}

TEST_F(PLErrorTest, ThreadsThatTheKernelDidNotMakeShareALastError) {
  EXPECT_EQ(kernel->GetLastError(), PLError_OK);
  std::thread([this] { kernel->SetLastError(kernel->m_ThreadGenericError); }).join();
  EXPECT_EQ(kernel->GetLastError(), kernel->m_ThreadGenericError);
  TestThread([this] {
    EXPECT_EQ(kernel->GetLastError(), PLError_OK);
    kernel->SetLastError(PLError_Usage);
    EXPECT_EQ(kernel->GetLastError(), PLError_Usage);
  });
  Expect(kernel->GetLastError(), 260, "ThreadGenericError");
}
