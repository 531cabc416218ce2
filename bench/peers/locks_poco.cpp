// SPDX-License-Identifier: Apache-2.0
#include <Poco/Event.h>
#include <Poco/Mutex.h>

#include "LockCases.h"

namespace {

class PocoMutex {
 public:
  void Lock() { m_mutex.lock(); }
  void Unlock() { m_mutex.unlock(); }

 private:
  Poco::Mutex m_mutex;
};

class PocoEvent {
 public:
  void Set() { m_event.set(); }
  void Wait() { m_event.wait(); }

 private:
  Poco::Event m_event;
};

const Registered s_registered([] {
  MeasureMutex<PocoMutex>("poco");
  MeasureEvent<PocoEvent>("poco");
});

}  // namespace
