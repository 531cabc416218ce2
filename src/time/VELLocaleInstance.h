// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIME_VELLOCALEINSTANCE_H
#define IPL_TIME_VELLOCALEINSTANCE_H

#include <stdint.h>

#include "threads/PosixMutex.h"
#include "time/VelClient.h"

/// The one holder of the connections to the platform's services and of their cached answers. Each operation takes the
/// lock and holds it across the exchange with the service. None opens the client library: call
/// LoadVelClientOperations before, without the kernel's locks.
class VELLocaleInstance {
 public:
  ~VELLocaleInstance();

  int32_t GetEpochOffset();
  int32_t GetTimeZoneOffset();
  uint32_t ConvertEpochToLocalTime(unsigned int seconds);

  static IPL_HIDDEN VELLocaleInstance m_LocaleInstance;

 private:
  template <typename>
  friend struct PLContractLayout;

  constexpr VELLocaleInstance() = default;

  void CloseAll();
  static void CloseAtExit();
  bool OpenTime() PL_REQUIRES(s_lock);
  bool OpenTV() PL_REQUIRES(s_lock);
  void CloseTV() PL_REQUIRES(s_lock);

  /// Has no destructor, since threads may still run when the process ends.
  static PosixMutex s_lock;

  vel::CVelLocaleTimeClient* m_TimeClient PL_GUARDED_BY(s_lock) = nullptr;  // owned; null while not connected
  vel::CVelLocaleTVClient* m_TVClient PL_GUARDED_BY(s_lock) = nullptr;      // owned; null while not connected
  int32_t m_EpochOffset PL_GUARDED_BY(s_lock) = 0;                          // seconds; 0: not known yet
  int32_t m_TimeZoneOffset PL_GUARDED_BY(s_lock) = -1;                      // minutes; -1: not known yet
};

#endif  // IPL_TIME_VELLOCALEINSTANCE_H
