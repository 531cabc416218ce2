// SPDX-License-Identifier: Apache-2.0
// The module "IPLHost": the meeting point of iplhost and the modules that it runs.
#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>
#include <ipl/PLMem.h>

IPL_DECLARE_MODULE(IPLHost);

namespace {

class HostMeetingPoint final : public IPLHost {
 public:
  explicit HostMeetingPoint(IPLKernel* kernel)
      : m_pKernel(kernel), m_pMutex(kernel->CreateMutex()), m_pDone(kernel->CreateEvent(true)) {}
  HostMeetingPoint(const HostMeetingPoint&) = delete;
  HostMeetingPoint& operator=(const HostMeetingPoint&) = delete;
  ~HostMeetingPoint() override {
    m_pKernel->DestroyEvent(m_pDone);
    m_pKernel->DestroyMutex(m_pMutex);
  }

  bool IsUsable() const { return m_pMutex != nullptr && m_pDone != nullptr; }

  void BeginWork() override;
  void EndWork(int status) override;
  bool WaitUntilDone(IPLKernel::Time timeout) override { return m_pDone->Wait(timeout); }
  int GetStatus() override;
  void RequestStop() override;

 private:
  enum { kHighestStatus = 125 };  // what a shell can tell from a signal

  IPLKernel* const m_pKernel;        // not owned
  IPLKernel::Mutex* const m_pMutex;  // owned
  IPLKernel::Event* const m_pDone;   // owned; set and cleared only with the mutex held, so it agrees with the fields
  unsigned int m_workCount PL_GUARDED_BY(m_pMutex) = 0;
  int m_status PL_GUARDED_BY(m_pMutex) = 0;
  bool m_bStopRequested PL_GUARDED_BY(m_pMutex) = false;
};

void HostMeetingPoint::BeginWork() {
  m_pMutex->Lock();
  // Modules are loaded one after the other: what one of them finished at once must not count as the end of all.
  if (m_workCount++ == 0 && !m_bStopRequested) {
    m_pDone->Clear();
  }
  m_pMutex->Unlock();
}

void HostMeetingPoint::EndWork(int status) {
  if (status < 0) {
    status = 1;
  } else if (status > kHighestStatus) {
    status = kHighestStatus;
  }
  m_pMutex->Lock();
  if (status > m_status) {
    m_status = status;
  }
  if (m_workCount > 0 && --m_workCount == 0) {
    m_pDone->Set();
  }
  m_pMutex->Unlock();
}

int HostMeetingPoint::GetStatus() {
  m_pMutex->Lock();
  const int status = m_status;
  m_pMutex->Unlock();
  return status;
}

void HostMeetingPoint::RequestStop() {
  m_pMutex->Lock();
  m_bStopRequested = true;
  m_pDone->Set();
  m_pMutex->Unlock();
}

// Somebody may acquire this module by its path as well as by its name. To the kernel these are two modules, with a load
// entry called for each; they share this library, hence one object. All entries run under the kernel's module mutex.
IPLKernel* s_pKernel = nullptr;
HostMeetingPoint* s_pMeetingPoint = nullptr;
unsigned int s_loadCount = 0;

void DestroyMeetingPoint() {
  PLTypes_ScalarDelete(s_pMeetingPoint, __FILE__, __LINE__);
  s_pMeetingPoint = nullptr;
}

}  // namespace

void IPLModule_PLModule_PutKernel(IPLKernel* kernel) { s_pKernel = kernel; }

IPLModule* IPLModule_IPLHost_ModuleLoad() {
  if (s_pMeetingPoint == nullptr) {
    s_pMeetingPoint =
        new (__FILE__, __LINE__, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr)) HostMeetingPoint(s_pKernel);
    if (s_pMeetingPoint == nullptr) {
      return nullptr;
    }
    if (!s_pMeetingPoint->IsUsable()) {
      DestroyMeetingPoint();
      return nullptr;
    }
  }
  ++s_loadCount;
  return s_pMeetingPoint;
}

void IPLModule_IPLHost_ModuleUnload(IPLModule* /*module*/) {
  if (--s_loadCount == 0) {
    DestroyMeetingPoint();
  }
}
