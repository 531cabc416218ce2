// SPDX-License-Identifier: Apache-2.0
#include "time/Calendar.h"

#include <time.h>

#include <algorithm>

static_assert(sizeof(time_t) == 8, "times beyond 2038 are broken down as they are");

IPLKernel::CalendarTime BreakDownTime(IPLKernel::Time time) {
  IPLKernel::CalendarTime cal = {};
  const auto seconds = static_cast<time_t>(time.GetNanoseconds() / 1000000000);
  struct tm fields = {};
  if (::gmtime_r(&seconds, &fields) == nullptr) {
    cal.year = 1970;
    cal.day = 1;
    return cal;
  }
  cal.second = static_cast<uint8_t>(fields.tm_sec);
  cal.minute = static_cast<uint8_t>(fields.tm_min);
  cal.hour = static_cast<uint8_t>(fields.tm_hour);
  cal.day = static_cast<uint8_t>(fields.tm_mday);
  cal.month = static_cast<uint8_t>(fields.tm_mon);
  cal.year = static_cast<uint16_t>(fields.tm_year + 1900);
  return cal;
}

bool IsDaylightSavingTime(IPLKernel::Time gmt) {
  const int64_t milliseconds = gmt.GetNanoseconds() / 1000000;
  const double exact = static_cast<double>(milliseconds) / 1000.0;
  const auto seconds = static_cast<time_t>(std::max<double>(INT32_MIN, std::min<double>(INT32_MAX, exact)));
  struct tm fields = {};
  ::tzset();
  return ::localtime_r(&seconds, &fields) != nullptr && fields.tm_isdst > 0;
}
