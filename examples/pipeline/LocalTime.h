// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_PIPELINE_LOCALTIME_H
#define IPL_EXAMPLES_PIPELINE_LOCALTIME_H

#include <stdio.h>

#include <ipl/IPLKernel.h>

namespace pipeline {

/// A local time as text: 2024-05-01 07:30:00.
class LocalTime {
 public:
  LocalTime(IPLKernel* kernel, IPLKernel::Time local) {
    IPLKernel::CalendarTime fields = {};
    kernel->TimeToCalendarTime(local, fields);
    snprintf(m_text, sizeof(m_text), "%04u-%02u-%02u %02u:%02u:%02u", fields.year, fields.month + 1U, fields.day,
             fields.hour, fields.minute, fields.second);
  }
  const char* GetText() const { return m_text; }

 private:
  char m_text[32];
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_PIPELINE_LOCALTIME_H
