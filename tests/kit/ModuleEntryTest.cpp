// SPDX-License-Identifier: Apache-2.0
// The entries that IPL_MODULE defines, with a class that fails in each way.
#include <ipl/ModuleEntry.h>
#include <ipl/PLString.h>

#include "support/AllocControl.h"
#include "support/KernelFixture.h"

enum Fault { kMemory, kConstructor, kStartThrows, kStartFails, kNone };
static Fault s_fault = kNone;
static int s_made = 0;
static int s_destroyed = 0;

/// Its module object does not lie at the start of the memory.
class Probe : public PLString, public IPLModule {
 public:
  explicit Probe(IPLKernel* kernel) {
    ++s_made;
    if (s_fault == kConstructor || kernel != IPLKernel::GetKernel()) {
      throw 1;
    }
  }
  ~Probe() override { ++s_destroyed; }
  bool Start() {
    if (s_fault == kStartThrows) {
      throw 2;
    }
    return s_fault != kStartFails;
  }
};

using ModuleEntryTest = KernelFixture;

IPL_MODULE(Probe, Probe);

TEST_F(ModuleEntryTest, AFaultGivesNullAndEverythingBack) {
  const int kMade[] = {0, 1, 1, 1, 1};
  const int kDestroyed[] = {0, 0, 1, 1, 0};
  IPLModule_PLModule_PutKernel(kernel);
  AllocControl memory(kernel);
  for (const Fault fault : {kMemory, kConstructor, kStartThrows, kStartFails, kNone}) {
    s_fault = fault;
    s_made = s_destroyed = 0;
    memory.FailAfter(fault == kMemory ? 0 : AllocControl::kNever);
    IPLModule* const module = IPLModule_Probe_ModuleLoad();
    EXPECT_EQ(module != nullptr, fault == kNone) << fault;
    EXPECT_EQ(s_made, kMade[fault]) << fault;
    EXPECT_EQ(s_destroyed, kDestroyed[fault]) << fault;
    EXPECT_EQ(memory.Held(), fault == kNone ? 1 : 0) << fault;
    IPLModule_Probe_ModuleUnload(module);
    EXPECT_EQ(memory.Held(), 0) << fault;
  }
  EXPECT_EQ(s_destroyed, 1);
}
