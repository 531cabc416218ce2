// SPDX-License-Identifier: Apache-2.0
// Slots 8 and 20 to 28: clocks. The platform's time service is not reached yet: GMT and local time read as the kernel's
// time and cannot be set, and no time is broken into calendar fields.
#include <time.h>

#include "kernel/IPLKernelImpl.h"
#include "threads/KernelLockGuard.h"

namespace {

constexpr int64_t kNanosecondsPerSecond = 1000000000;

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

void IPLKernelImpl::ReadGMTFromSystemClock(Time& gmt) { gmt = Time(0); }

void IPLKernelImpl::SetTimeGMT(const Time&) {}

IPLKernel::Time IPLKernelImpl::GetTimeGMT() {
  KernelLockGuard guard(m_pStateMutex);
  return GetKernelTime().GetNanoseconds() + m_gmtOffset.GetNanoseconds();
}

void IPLKernelImpl::SetTimeLocal(const Time&) {}

IPLKernel::Time IPLKernelImpl::GetTimeLocal() { return ConvertGMTToLocal(GetTimeGMT()); }

IPLKernel::Time IPLKernelImpl::ConvertGMTToLocal(const Time& gmt) { return gmt; }

void IPLKernelImpl::TimeToCalendarTime(const Time&, CalendarTime& cal) {
  cal = CalendarTime();
  cal.day = 1;
  cal.year = 1970;
}

IPLKernel::Time IPLKernelImpl::GetDayLightSavingTimeBias(const Time&) { return 0; }
