// SPDX-License-Identifier: Apache-2.0
#include "BenchKernel.h"
#include "LockCases.h"
#include "Posix.h"
#include "Rules.h"

namespace {

const RunningKernel s_kernel;

class PL_CAPABILITY("mutex") OurMutex {
 public:
  OurMutex() : m_pMutex(s_kernel->CreateMutex()) {}
  ~OurMutex() { s_kernel->DestroyMutex(m_pMutex); }
  OurMutex(const OurMutex&) = delete;
  OurMutex& operator=(const OurMutex&) = delete;

  // Taken twice on purpose, which the analysis does not accept.
  void Lock() PL_NO_THREAD_SAFETY_ANALYSIS { m_pMutex->Lock(); }
  void Unlock() PL_NO_THREAD_SAFETY_ANALYSIS { m_pMutex->Unlock(); }

 private:
  IPLKernel::Mutex* m_pMutex;  // owned
};

class OurEvent {
 public:
  OurEvent() : m_pEvent(s_kernel->CreateEvent(false)) {}
  ~OurEvent() { s_kernel->DestroyEvent(m_pEvent); }
  OurEvent(const OurEvent&) = delete;
  OurEvent& operator=(const OurEvent&) = delete;

  void Set() { m_pEvent->Set(); }
  void Wait() { m_pEvent->Wait(IPLKernel::Time::Forever()); }

 private:
  IPLKernel::Event* m_pEvent;  // owned
};

const Registered s_registered([] {
  MeasureMutex<OurMutex>("ours");
  MeasureMutex<PosixRecursiveMutex>("limit");
  MeasureMutex<RulesMutex>("rules");
  MeasureEvent<OurEvent>("ours");
  MeasureEvent<PosixEvent>("limit");
});

}  // namespace
