// SPDX-License-Identifier: Apache-2.0
#include <prclist.h>
#include <prcvar.h>
#include <prlock.h>
#include <prmem.h>

#include "QueueCases.h"

namespace {

// What NSPR's users write of its lock, condition and list; it has no queue.
class NsprQueue {
 public:
  NsprQueue() { PR_INIT_CLIST(&m_list); }
  ~NsprQueue() {
    PR_DestroyCondVar(m_pCondition);
    PR_DestroyLock(m_pLock);
  }
  void Post(uintptr_t value) {
    auto* entry = static_cast<Entry*>(PR_Malloc(sizeof(Entry)));
    entry->value = value;
    PR_Lock(m_pLock);
    const bool wasEmpty = PR_CLIST_IS_EMPTY(&m_list);
    PR_APPEND_LINK(&entry->link, &m_list);
    if (wasEmpty) {
      PR_NotifyCondVar(m_pCondition);
    }
    PR_Unlock(m_pLock);
  }
  uintptr_t Receive() {
    PR_Lock(m_pLock);
    while (PR_CLIST_IS_EMPTY(&m_list)) {
      PR_WaitCondVar(m_pCondition, PR_INTERVAL_NO_TIMEOUT);
    }
    auto* entry = reinterpret_cast<Entry*>(PR_LIST_HEAD(&m_list));
    PR_REMOVE_LINK(&entry->link);
    PR_Unlock(m_pLock);
    const uintptr_t value = entry->value;
    PR_Free(entry);
    return value;
  }

 private:
  struct Entry {
    PRCList link;
    uintptr_t value;
  };
  PRLock* m_pLock = PR_NewLock();
  PRCondVar* m_pCondition = PR_NewCondVar(m_pLock);
  PRCList m_list;
};

const Registered s_registered([] {
  MeasureQueue<NsprQueue>("nspr");
  Measure("SendReply/nspr", SendReply<NsprQueue>);
});

}  // namespace
