// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_ALARMCLOCK_ALARMTIME_H
#define IPL_EXAMPLES_ALARMCLOCK_ALARMTIME_H

#include <ipl/IPLKernel.h>

namespace alarms {

/// Reads a time of day, HH:MM or HH:MM:SS, as the time since midnight. Returns false if text is none.
bool ParseTimeOfDay(const char* text, IPLKernel::Time& time);

/// Reads a duration: a whole number with the unit ms, s, min or h right behind it. Returns false if text is none, or is
/// longer than a Time can be.
bool ParseDuration(const char* text, IPLKernel::Time& time);

/// Returns the GMT time of day at which it is this local one. offset: local time minus GMT.
IPLKernel::Time LocalToGmtTimeOfDay(IPLKernel::Time local, IPLKernel::Time offset);

}  // namespace alarms

#endif  // IPL_EXAMPLES_ALARMCLOCK_ALARMTIME_H
