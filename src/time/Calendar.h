// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIME_CALENDAR_H
#define IPL_TIME_CALENDAR_H

#include <ipl/IPLKernel.h>

/// Breaks a time, truncated toward zero to whole seconds, into calendar fields; no time zone is applied. A time that
/// the C library cannot break down gives 1970-01-01 00:00:00. A year takes its low 16 bits.
IPLKernel::CalendarTime BreakDownTime(IPLKernel::Time time);

/// Returns whether daylight-saving time is in force at a GMT instant in the C library's own zone. Reads the zone's
/// setting anew: the caller holds the lock that keeps other threads from doing so at the same time. Instants beyond 32
/// bits of seconds count as the nearest that fits.
bool IsDaylightSavingTime(IPLKernel::Time gmt);

#endif  // IPL_TIME_CALENDAR_H
