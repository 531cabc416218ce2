// SPDX-License-Identifier: Apache-2.0
#include <prmon.h>

#include "LockCases.h"

namespace {

class NsprMonitor {
 public:
  ~NsprMonitor() { PR_DestroyMonitor(m_pMonitor); }
  void Lock() { PR_EnterMonitor(m_pMonitor); }
  void Unlock() { PR_ExitMonitor(m_pMonitor); }
  void Set() {
    PR_EnterMonitor(m_pMonitor);
    m_set = true;
    PR_Notify(m_pMonitor);
    PR_ExitMonitor(m_pMonitor);
  }
  void Wait() {
    PR_EnterMonitor(m_pMonitor);
    while (!m_set) {
      PR_Wait(m_pMonitor, PR_INTERVAL_NO_TIMEOUT);
    }
    m_set = false;
    PR_ExitMonitor(m_pMonitor);
  }

 private:
  PRMonitor* m_pMonitor = PR_NewMonitor();
  bool m_set = false;
};

const Registered s_registered([] {
  MeasureMutex<NsprMonitor>("nspr");
  MeasureEvent<NsprMonitor>("nspr");
});

}  // namespace
