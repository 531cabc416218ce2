// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "QueueCases.h"

namespace {

// As a message would be, each entry is a block of its own.
class GlibQueue {
 public:
  ~GlibQueue() { g_async_queue_unref(m_pQueue); }
  void Post(uintptr_t value) {
    auto* entry = static_cast<uintptr_t*>(g_malloc(sizeof(uintptr_t)));
    *entry = value;
    g_async_queue_push(m_pQueue, entry);
  }
  uintptr_t Receive() {
    auto* entry = static_cast<uintptr_t*>(g_async_queue_pop(m_pQueue));
    const uintptr_t value = *entry;
    g_free(entry);
    return value;
  }

 private:
  GAsyncQueue* m_pQueue = g_async_queue_new();
};

const Registered s_registered([] {
  MeasureQueue<GlibQueue>("glib");
  Measure("SendReply/glib", SendReply<GlibQueue>);
});

}  // namespace
