// SPDX-License-Identifier: Apache-2.0
#include <apr_general.h>
#include <apr_queue.h>
#include <stdlib.h>

#include "QueueCases.h"

namespace {

// Its size is fixed when it is made.
class AprQueue {
 public:
  AprQueue() {
    apr_pool_create(&m_pPool, nullptr);
    apr_queue_create(&m_pQueue, 1 << 18, m_pPool);
  }
  ~AprQueue() { apr_pool_destroy(m_pPool); }
  void Post(uintptr_t value) {
    auto* entry = static_cast<uintptr_t*>(::malloc(sizeof(uintptr_t)));
    *entry = value;
    apr_queue_push(m_pQueue, entry);
  }
  uintptr_t Receive() {
    void* entry = nullptr;
    apr_queue_pop(m_pQueue, &entry);
    const uintptr_t value = *static_cast<uintptr_t*>(entry);
    ::free(entry);
    return value;
  }

 private:
  apr_pool_t* m_pPool = nullptr;
  apr_queue_t* m_pQueue = nullptr;
};

const Registered s_registered([] {
  apr_initialize();
  MeasureQueue<AprQueue>("apr");
  Measure("SendReply/apr", SendReply<AprQueue>);
});

}  // namespace
