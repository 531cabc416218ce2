// SPDX-License-Identifier: Apache-2.0
#include "AlarmClock/AlarmTime.h"

#include <string.h>

namespace alarms {

namespace {

constexpr int64_t kMillisecond = 1000000;
constexpr int64_t kSecond = 1000 * kMillisecond;
constexpr int64_t kMinute = 60 * kSecond;
constexpr int64_t kHour = 60 * kMinute;
constexpr int64_t kDay = 24 * kHour;

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

/// Returns the number that two digits are, -1 if they are none.
int TwoDigits(const char* text) {
  return IsDigit(text[0]) && IsDigit(text[1]) ? 10 * (text[0] - '0') + (text[1] - '0') : -1;
}

int64_t UnitByName(const char* name) {
  static const struct {
    const char* name;
    int64_t nanoseconds;
  } kUnits[] = {{"ms", kMillisecond}, {"s", kSecond}, {"min", kMinute}, {"h", kHour}};
  for (const auto& unit : kUnits) {
    if (strcmp(unit.name, name) == 0) {
      return unit.nanoseconds;
    }
  }
  return 0;
}

}  // namespace

bool ParseTimeOfDay(const char* text, IPLKernel::Time& time) {
  const size_t length = strlen(text);
  if ((length != 5 && length != 8) || text[2] != ':' || (length == 8 && text[5] != ':')) {
    return false;
  }
  const int hour = TwoDigits(text);
  const int minute = TwoDigits(text + 3);
  const int second = length == 8 ? TwoDigits(text + 6) : 0;
  time = hour * kHour + minute * kMinute + second * kSecond;
  return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
}

bool ParseDuration(const char* text, IPLKernel::Time& time) {
  const char* unitName = text;
  int64_t number = 0;
  for (; IsDigit(*unitName); ++unitName) {
    const int digit = *unitName - '0';
    if (number > (INT64_MAX - digit) / 10) {
      return false;
    }
    number = 10 * number + digit;
  }
  const int64_t unit = UnitByName(unitName);
  if (unitName == text || unit == 0 || number > INT64_MAX / unit) {
    return false;
  }
  time = number * unit;
  return true;
}

IPLKernel::Time LocalToGmtTimeOfDay(IPLKernel::Time local, IPLKernel::Time offset) {
  const int64_t gmt = (local.GetNanoseconds() - offset.GetNanoseconds()) % kDay;
  return gmt < 0 ? gmt + kDay : gmt;
}

}  // namespace alarms
