// SPDX-License-Identifier: Apache-2.0
// Slots 8 and 20 to 28: clocks. GMT is the kernel's time plus an offset; the operating system's clock is never set.
#include <time.h>

#include <ipl/LocaleService.h>

#include "kernel/IPLKernelImpl.h"
#include "threads/KernelLockGuard.h"
#include "time/Calendar.h"

namespace {

constexpr int64_t kNanosecondsPerSecond = 1000000000;
constexpr int64_t kNanosecondsPerMinute = 60 * kNanosecondsPerSecond;
constexpr int64_t kDaylightSavingBias = 60 * kNanosecondsPerMinute;

// Sums and differences of instants wrap instead of overflowing: their operands come from callers.
int64_t Add(int64_t left, int64_t right) {
  return static_cast<int64_t>(static_cast<uint64_t>(left) + static_cast<uint64_t>(right));
}

int64_t Subtract(int64_t left, int64_t right) {
  return static_cast<int64_t>(static_cast<uint64_t>(left) - static_cast<uint64_t>(right));
}

IPLKernel::Time FromTimespec(const timespec& value) {
  return static_cast<int64_t>(value.tv_sec) * kNanosecondsPerSecond + value.tv_nsec;
}

}  // namespace

void IPLKernelImpl::Sleep(const Time& duration) {
  const int64_t nanoseconds = duration.GetNanoseconds();
  if (nanoseconds == 0) {
    return;
  }
  timespec interval = {};
  interval.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
  interval.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
  ::nanosleep(&interval, nullptr);
}

IPLKernel::Time IPLKernelImpl::GetKernelTime() {
  timespec now = {};
  return ::clock_gettime(CLOCK_MONOTONIC, &now) == 0 ? FromTimespec(now) : Time(0);
}

IPLKernel::Time IPLKernelImpl::GetKernelTimeResolution() {
  timespec resolution = {};
  return ::clock_getres(CLOCK_MONOTONIC, &resolution) == 0 ? FromTimespec(resolution) : Time(0);
}

void IPLKernelImpl::ReadGMTFromSystemClock(Time& gmt) {
  gmt = static_cast<int64_t>(getEpochTime()) * kNanosecondsPerSecond;
}

void IPLKernelImpl::WriteGMTToSystemClock(const Time&) {}

void IPLKernelImpl::SetTimeGMT(const Time& gmt) {
  const Time now = GetKernelTime();
  if (now >= gmt) {
    return;
  }
  {
    KernelLockGuard guard(m_pStateMutex);
    m_gmtOffset = Subtract(gmt.GetNanoseconds(), now.GetNanoseconds());
    WriteGMTToSystemClock(gmt);
  }
  // Without the state mutex: the timer thread reads GMT before it answers.
  NotifyGMTChange();
}

IPLKernel::Time IPLKernelImpl::GetTimeGMT() {
  KernelLockGuard guard(m_pStateMutex);
  return Add(GetKernelTime().GetNanoseconds(), m_gmtOffset.GetNanoseconds());
}

void IPLKernelImpl::SetTimeLocal(const Time& local) {
  const Time gmtNow = GetTimeGMT();
  const Time localNow = GetTimeLocal();
  SetTimeGMT(Add(Subtract(gmtNow.GetNanoseconds(), localNow.GetNanoseconds()), local.GetNanoseconds()));
}

IPLKernel::Time IPLKernelImpl::GetTimeLocal() { return ConvertGMTToLocal(GetTimeGMT()); }

IPLKernel::Time IPLKernelImpl::ConvertGMTToLocal(const Time& gmt) {
  // Without the state mutex: a service that hangs would hold up the timers and all that needs an identifier.
  const auto minutes = static_cast<uint64_t>(getTimeZone_Offset());
  return Add(gmt.GetNanoseconds(), static_cast<int64_t>(minutes * static_cast<uint64_t>(kNanosecondsPerMinute)));
}

void IPLKernelImpl::TimeToCalendarTime(const Time& time, CalendarTime& cal) {
  KernelLockGuard guard(m_pStateMutex);
  cal = BreakDownTime(time);
}

IPLKernel::Time IPLKernelImpl::GetDayLightSavingTimeBias(const Time& time) {
  KernelLockGuard guard(m_pStateMutex);
  return IsDaylightSavingTime(time) ? kDaylightSavingBias : 0;
}
