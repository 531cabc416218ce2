// SPDX-License-Identifier: Apache-2.0
// The module "AlarmClock": prints a line when a time of day comes (--at 07:30, local time) or a time has passed
// (--in 250ms), for each such option behind "--", and ends with the last one. GMT has to be right for --at, as it is
// with iplhost --wall-clock.
#include <stdio.h>

#include <ipl/ArrayRange.h>
#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/ModuleEntry.h>
#include <ipl/PLArray.h>
#include <ipl/TimerEvent.h>

#include "AlarmClock/AlarmTime.h"
#include "pipeline/Arguments.h"
#include "pipeline/LocalTime.h"
#include "pipeline/Pipeline.h"
#include "pipeline/Worker.h"

namespace alarms {
namespace {

struct Alarm {
  const char* option;
  const char* value;
  IPLKernel::Time time;  // since midnight local time, or from now
  bool isTimeOfDay;
  unsigned long timerID;  // 0: not set
};

class AlarmClock final : public IPLModule, private pipeline::MessageHandler {
 public:
  explicit AlarmClock(IPLKernel* kernel)
      : m_pKernel(kernel), m_host(ipl::AcquireModule<IPLHost>(kernel, "IPLHost")), m_worker(kernel, this) {}
  ~AlarmClock() override;

  bool Start();

 private:
  enum : unsigned long { kMessageSet = 0 };  // posted: set all alarms

  pipeline::Status ReadAlarms();
  pipeline::Status ReadAlarm(pipeline::Arguments& arguments);
  static pipeline::Status Refuse(const char* word, const char* value, const char* problem,
                                 pipeline::Status status = pipeline::kUsage);
  void Handle(unsigned long id, void* data) override;
  void Discard(unsigned long id, void* data) override;
  void SetAlarms();
  void Ring(const ipl::TimerEvent& fired);

  IPLKernel* const m_pKernel;
  const ipl::ModuleOwner<IPLHost> m_host;
  // Used by the worker's thread alone while that runs:
  PLArray<Alarm> m_alarms;
  unsigned long m_waiting = 0;

  pipeline::Worker m_worker;
};

bool AlarmClock::Start() {
  if (!m_host || !m_worker.Start("AlarmClock")) {
    return false;
  }
  m_host->BeginWork();
  pipeline::Status status = ReadAlarms();
  if (status == pipeline::kDone && !m_worker.Post(kMessageSet, nullptr)) {
    status = Refuse("no alarm", "", "memory is exhausted", pipeline::kNoMemory);
  }
  if (status != pipeline::kDone) {
    m_host->EndWork(status);
  }
  return true;
}

/// The timers post to the worker's queue, so they are cleared while it is there.
AlarmClock::~AlarmClock() {
  m_worker.Halt();
  for (const Alarm& alarm : m_alarms) {
    if (alarm.timerID != 0) {
      m_pKernel->ClearTimer(alarm.timerID, *m_worker.GetQueue());
    }
  }
  m_worker.Stop();
}

pipeline::Status AlarmClock::ReadAlarms() {
  pipeline::Arguments arguments(m_pKernel);
  while (arguments.Next()) {
    const pipeline::Status status = ReadAlarm(arguments);
    if (status != pipeline::kDone) {
      return status;
    }
  }
  return m_alarms.GetSize() > 0 ? pipeline::kDone : Refuse("no alarm", "", "give --at HH:MM or --in DURATION");
}

pipeline::Status AlarmClock::ReadAlarm(pipeline::Arguments& arguments) {
  Alarm alarm = {arguments.GetWord(), nullptr, 0, arguments.IsOption("--at"), 0};
  if (!alarm.isTimeOfDay && !arguments.IsOption("--in")) {
    return Refuse(alarm.option, "", arguments.IsOption() ? "unknown option" : "unexpected argument");
  }
  alarm.value = arguments.TakeValue();
  if (alarm.value == nullptr) {
    return Refuse(alarm.option, "", "needs a value");
  }
  if (alarm.isTimeOfDay && !ParseTimeOfDay(alarm.value, alarm.time)) {
    return Refuse(alarm.option, alarm.value, "not a time of day, HH:MM or HH:MM:SS");
  }
  if (!alarm.isTimeOfDay && !ParseDuration(alarm.value, alarm.time)) {
    return Refuse(alarm.option, alarm.value, "not a duration, a whole number of ms, s, min or h");
  }
  const unsigned long count = m_alarms.GetSize();
  m_alarms.Append(alarm);
  if (m_alarms.GetSize() == count) {
    return Refuse(alarm.option, alarm.value, "memory is exhausted", pipeline::kNoMemory);
  }
  return pipeline::kDone;
}

/// Tells what is wrong with an option, or with all of them, and returns the status.
pipeline::Status AlarmClock::Refuse(const char* word, const char* value, const char* problem, pipeline::Status status) {
  fprintf(stderr, "AlarmClock: %s%s%s: %s\n", word, *value == '\0' ? "" : " ", value, problem);
  return status;
}

void AlarmClock::Handle(unsigned long id, void* data) {
  if (id == kMessageSet) {
    SetAlarms();
  } else if (const ipl::TimerEvent fired = ipl::TakeTimerEvent(m_pKernel, id, data)) {
    Ring(fired);
  }
}

void AlarmClock::Discard(unsigned long id, void* data) {
  static_cast<void>(ipl::TakeTimerEvent(m_pKernel, id, data));  // which gives it back
}

/// On the thread that hears them ring, which so knows all timers before it sees the first message of one.
void AlarmClock::SetAlarms() {
  const IPLKernel::Time offset = m_pKernel->ConvertGMTToLocal(0);
  for (Alarm& alarm : m_alarms) {
    // A time of day is a time of the first day of 1970, for the kernel.
    alarm.timerID = alarm.isTimeOfDay
                        ? m_pKernel->SetTimerGMT(LocalToGmtTimeOfDay(alarm.time, offset), *m_worker.GetQueue(), 0)
                        : m_pKernel->SetTimer(alarm.time, *m_worker.GetQueue(), false);
    if (alarm.timerID != 0) {
      ++m_waiting;
    }
  }
  if (m_waiting < m_alarms.GetSize()) {
    fprintf(stderr, "AlarmClock: memory is exhausted, not all alarms are set\n");
    m_host->EndWork(pipeline::kNoMemory);
    m_waiting = 0;
  }
}

void AlarmClock::Ring(const ipl::TimerEvent& fired) {
  const IPLKernel::Time local = m_pKernel->ConvertGMTToLocal(fired.fireTimeGMT);
  for (const Alarm& alarm : m_alarms) {
    if (alarm.timerID == fired.timerID) {
      printf("%s  %s %s\n", pipeline::LocalTime(m_pKernel, local).GetText(), alarm.option, alarm.value);
    }
  }
  const bool isWritten = fflush(stdout) == 0 && ferror(stdout) == 0;
  if (m_waiting > 0 && --m_waiting == 0) {
    m_host->EndWork(isWritten ? pipeline::kDone : pipeline::kFailed);
  }
}

}  // namespace
}  // namespace alarms

IPL_MODULE(AlarmClock, alarms::AlarmClock);
