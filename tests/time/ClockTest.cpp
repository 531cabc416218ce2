// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <sstream>

#include "support/KernelFixture.h"

constexpr int64_t kSecond = 1000000000;

struct ClockTest : KernelFixture {
  int64_t Now() { return kernel->GetKernelTime().GetNanoseconds(); }
};

TEST_F(ClockTest, KernelTimeIsMonotonicAndSleepLastsAtLeastItsDuration) {
  const auto before = std::chrono::steady_clock::now().time_since_epoch().count();
  const int64_t now = Now();
  EXPECT_TRUE(before <= now && now <= std::chrono::steady_clock::now().time_since_epoch().count());
  EXPECT_GT(kernel->GetKernelTimeResolution().GetNanoseconds(), 0);
  for (const int64_t duration : {INT64_MIN, int64_t{-1}, int64_t{0}, kSecond / 50, kSecond + kSecond / 50}) {
    const int64_t start = Now();
    kernel->Sleep(duration);
    EXPECT_GE(Now() - start, duration);
  }
}

TEST_F(ClockTest, CalendarFieldsAreThoseOfNoZone) {
  setenv("TZ", "JST-9", 1);
  std::istringstream rows(
      "0 1970-01-01/00:00:00 -1 1970-01-01/00:00:00 1999999999 1970-01-01/00:00:01 -1500000000 1969-12-31/23:59:59 "
      "-2208988800000000000 1900-01-01/00:00:00 -9223372036854775808 1677-09-21/00:12:44 "
      "1709210096000000000 2024-02-29/12:34:56 2147483648000000000 2038-01-19/03:14:08 "
      "4107542399000000000 2100-02-28/23:59:59 4107542400000000000 2100-03-01/00:00:00 "
      "9223372036854775807 2262-04-11/23:47:16");
  int64_t time = 0;  // fractions of seconds are cut off toward zero
  for (std::string fields; rows >> time >> fields;) {
    IPLKernel::CalendarTime cal = {99, 99, 99, 99, 99, 9999};
    kernel->TimeToCalendarTime(time, cal);
    char text[64];
    kernel->snprintf(text, sizeof(text), "%04d-%02d-%02d/%02d:%02d:%02d", cal.year, cal.month + 1, cal.day, cal.hour,
                     cal.minute, cal.second);
    EXPECT_EQ(text, fields) << time;
  }
}

TEST_F(ClockTest, DaylightSavingTimeIsThatOfTheZoneWhenAsked) {
  // Hours in the north and the south. What does not fit 32 bits of seconds counts as a January or December, their ends.
  std::istringstream rows(
      "1711846799999999999 0 1 1711846800000000000 1 1 1720000000000000000 1 0 1729990799999999999 1 1 "
      "1729990800000000000 0 1 2224800000000000000 0 1 -9223372036854775808 0 1");
  for (int64_t time, north, south; rows >> time >> north >> south;) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    EXPECT_EQ(kernel->GetDayLightSavingTimeBias(time).GetNanoseconds(), north * 3600 * kSecond) << time;
    setenv("TZ", "AEST-10AEDT,M10.1.0,M4.1.0/3", 1);
    EXPECT_EQ(kernel->GetDayLightSavingTimeBias(time).GetNanoseconds(), south * 3600 * kSecond) << time;
  }
}
