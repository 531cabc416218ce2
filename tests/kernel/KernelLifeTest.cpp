// SPDX-License-Identifier: Apache-2.0
// The kernel object from its construction to its end.
#include "kernel/IPLKernelImpl.h"
#include "support/AllocControl.h"
#include "support/TestThread.h"

/// A kernel object that is not started, around each case.
class KernelLifeTest : public testing::Test {
 protected:
  ~KernelLifeTest() override {
    IPLModule_IPLKernel_UnloadModule(kernel);
    EXPECT_EQ(IPLKernel::GetKernel(), nullptr);
  }
  static IPLKernel* Load() { return static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule()); }
  void ExpectWorking() {
    bool ran = false;
    TestThread([&ran] { ran = true; });
    EXPECT_TRUE(ran);
    IPLKernel::MessageQueue* queue = kernel->CreateMessageQueue();
    ASSERT_TRUE(queue != nullptr && queue->Receive(0) == nullptr);
    EXPECT_EQ(kernel->GetLastError(), PLError_Timeout);
    kernel->DestroyMessageQueue(queue);
  }

  IPLKernel* kernel = Load();
  IPLModule m_stranger;
};

TEST_F(KernelLifeTest, OneObjectAndOneStart) {
  EXPECT_EQ(IPLKernel::GetKernel(), kernel);
  const char* first[] = {"first"};
  const char* second[] = {"second", "--modulemap", "a:b"};
  IPLModule_IPLKernel_InitializeKernel(1, first);
  EXPECT_EQ(Load(), kernel);
  {
    const AllocControl memory(kernel);
    IPLModule_IPLKernel_InitializeKernel(3, second);
    EXPECT_EQ(memory.Allocations() + memory.Frees(), 0) << "a second start replaces mutexes or tables";
  }
  EXPECT_TRUE(kernel->GetArgc() == 1 && kernel->GetArgv() == first);
  IPLModule_IPLKernel_UnloadModule(nullptr);
  IPLModule_IPLKernel_UnloadModule(&m_stranger);
  ASSERT_EQ(IPLKernel::GetKernel(), kernel);
  ExpectWorking();
}

TEST_F(KernelLifeTest, EachLifeBeginsAnewWhateverItsStorageHolds) {
  const char* withNulls[] = {nullptr, "--modulemap", nullptr, "--modulemap", "a:b", nullptr, "--modulemap"};
  for (const int argc : {0, 7, 1}) {
    EXPECT_TRUE(kernel->GetArgc() == 0 && kernel->GetArgv() == nullptr);
    EXPECT_FALSE(kernel->IsShutdownPending());
    EXPECT_EQ(kernel->GetLastError(), PLError_OK);
    const char** argv = argc != 0 ? withNulls : nullptr;
    IPLModule_IPLKernel_InitializeKernel(argc, argv);
    EXPECT_TRUE(kernel->GetArgc() == argc && kernel->GetArgv() == argv);
    ExpectWorking();
    IPLModule_IPLKernel_UnloadModule(kernel);
    memset(static_cast<void*>(kernel), 0xA5, sizeof(IPLKernelImpl));
    ASSERT_EQ(Load(), kernel);
  }
  alignas(IPLKernelImpl) static unsigned char storage[sizeof(IPLKernelImpl)];
  IPLKernel* object = new (static_cast<void*>(storage)) IPLKernelImpl;
  KernelTable(object).Original<void(IPLKernel*)>(1)(object);  // deletes: an allocator that gets this ends the program
}

TEST_F(KernelLifeTest, NobodyFindsAnObjectThatIsBeingDestroyed) {
  KernelTable table(kernel);
  static IPLKernel* found;
  found = kernel;
  table.Replace(
      0, +[](IPLKernel*) { found = IPLKernel::GetKernel(); });
  IPLModule_IPLKernel_UnloadModule(kernel);
  EXPECT_EQ(found, nullptr);
}

TEST_F(KernelLifeTest, BeforeItsStart) {
  EXPECT_TRUE(kernel->AcquireModule("Alpha") == nullptr && kernel->AcquireModule("Alpha", "/nowhere") == nullptr);
  EXPECT_EQ(kernel->AcquireModule("IPLKernel"), kernel);
  kernel->ReleaseModule(&m_stranger);
  EXPECT_TRUE(kernel->CreateMessageQueue() == nullptr && kernel->GetCurrentThread() == nullptr);
  EXPECT_EQ(kernel->GetTimerMessageID(), 0U);
  IPLKernel::Thread* thread = kernel->CreateThread();
  EXPECT_FALSE(thread->Run("early", CallFunction, nullptr));
  EXPECT_EQ(kernel->GetLastError(), kernel->m_ThreadCreationFailure);
  EXPECT_TRUE(thread->Detach(nullptr));
  IPLKernel::Event* event = kernel->CreateEvent(false);
  EXPECT_FALSE(event->Wait(0));
  EXPECT_EQ(kernel->GetLastError(), PLError_Timeout);
  kernel->DestroyEvent(event);
}

TEST_F(KernelLifeTest, HashOfModuleKeys) {
  EXPECT_EQ(PLHashTable_KeyHash({"core", nullptr}), 893226815U);
  EXPECT_EQ(PLHashTable_KeyHash({"core", ""}), 893226815U);
  EXPECT_EQ(PLHashTable_KeyHash({"core", "/usr/lib/libcore.so"}), 2979861115U);
  EXPECT_EQ(PLHashTable_KeyHash({"\xFF\xFF\xFF\xFF\xFF", "\x80"}), 2508332737U);
}
