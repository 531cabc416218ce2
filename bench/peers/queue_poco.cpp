// SPDX-License-Identifier: Apache-2.0
#include <Poco/NotificationQueue.h>

#include "QueueCases.h"

namespace {

class Value : public Poco::Notification {
 public:
  explicit Value(uintptr_t value) : m_value(value) {}
  uintptr_t Get() const { return m_value; }

 private:
  uintptr_t m_value;
};

class PocoQueue {
 public:
  void Post(uintptr_t value) { m_queue.enqueueNotification(new Value(value)); }
  uintptr_t Receive() {
    Poco::Notification::Ptr notification(m_queue.waitDequeueNotification());
    return static_cast<Value*>(notification.get())->Get();
  }

 private:
  Poco::NotificationQueue m_queue;
};

const Registered s_registered([] {
  MeasureQueue<PocoQueue>("poco");
  Measure("SendReply/poco", SendReply<PocoQueue>);
});

}  // namespace
