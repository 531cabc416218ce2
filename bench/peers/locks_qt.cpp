// SPDX-License-Identifier: Apache-2.0
#include <QRecursiveMutex>
#include <QSemaphore>

#include "LockCases.h"

namespace {

class QtMutex {
 public:
  void Lock() { m_mutex.lock(); }
  void Unlock() { m_mutex.unlock(); }

 private:
  QRecursiveMutex m_mutex;
};

class QtEvent {
 public:
  void Set() { m_semaphore.release(); }
  void Wait() { m_semaphore.acquire(); }

 private:
  QSemaphore m_semaphore;
};

const Registered s_registered([] {
  MeasureMutex<QtMutex>("qt");
  MeasureEvent<QtEvent>("qt");
});

}  // namespace
