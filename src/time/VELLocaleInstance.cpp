// SPDX-License-Identifier: Apache-2.0
#include "time/VELLocaleInstance.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include <memory>

#include <ipl/LocaleService.h>

#include "foundation/ContractLayout.h"
#include "time/VelClientLibrary.h"

template <>
struct PLContractLayout<VELLocaleInstance> {
  IPL_ASSERT_OFFSET(VELLocaleInstance, m_TimeClient, 0);
  IPL_ASSERT_OFFSET(VELLocaleInstance, m_TVClient, 4);
  IPL_ASSERT_OFFSET(VELLocaleInstance, m_EpochOffset, 8);
  IPL_ASSERT_OFFSET(VELLocaleInstance, m_TimeZoneOffset, 12);
};

namespace {

struct FreeText {
  void operator()(char* text) const { ::free(text); }
};
using Answer = std::unique_ptr<char, FreeText>;

// Reads the number of an answer. False if there is no answer or no number in it.
template <typename Number>
bool ReadNumber(const Answer& answer, const char* format, Number& number) {
  return answer != nullptr && ::sscanf(answer.get(), format, &number) == 1;
}

}  // namespace

VELLocaleInstance VELLocaleInstance::m_LocaleInstance;
PosixMutex VELLocaleInstance::s_lock;

VELLocaleInstance::~VELLocaleInstance() { CloseAll(); }

void VELLocaleInstance::CloseAtExit() {
  static const int registered = ::atexit([] { m_LocaleInstance.CloseAll(); });
  static_cast<void>(registered);
}

void VELLocaleInstance::CloseAll() {
  if (!s_lock.TryLock()) {
    return;
  }
  if (m_TimeClient != nullptr) {
    GetVelClientOperations()->closeTime(m_TimeClient);
    m_TimeClient = nullptr;
  }
  if (m_TVClient != nullptr) {
    CloseTV();
  }
  s_lock.Unlock();
}

bool VELLocaleInstance::OpenTime() {
  const VelClientOperations* operations = GetVelClientOperations();
  if (m_TimeClient == nullptr && operations != nullptr) {
    m_TimeClient = operations->openTime();
    CloseAtExit();
  }
  return m_TimeClient != nullptr;
}

bool VELLocaleInstance::OpenTV() {
  const VelClientOperations* operations = GetVelClientOperations();
  if (m_TVClient == nullptr && operations != nullptr) {
    m_TVClient = operations->openTV();
    CloseAtExit();
  }
  return m_TVClient != nullptr;
}

void VELLocaleInstance::CloseTV() {
  GetVelClientOperations()->closeTV(m_TVClient);
  m_TVClient = nullptr;
}

int32_t VELLocaleInstance::GetEpochOffset() {
  PosixMutexGuard guard(s_lock);
  if (m_EpochOffset != 0 || !OpenTime()) {
    return m_EpochOffset;
  }
  const Answer answer(GetVelClientOperations()->executeTime(m_TimeClient, "GetEpochTime", ""));
  unsigned int epoch = 0;
  if (ReadNumber(answer, "%u", epoch)) {
    m_EpochOffset = static_cast<int32_t>(epoch - static_cast<uint32_t>(::time(nullptr)));
  }
  return m_EpochOffset;
}

int32_t VELLocaleInstance::GetTimeZoneOffset() {
  PosixMutexGuard guard(s_lock);
  if (m_TimeZoneOffset != -1) {
    return m_TimeZoneOffset;
  }
  if (!OpenTV()) {
    return 0;
  }
  const Answer answer(GetVelClientOperations()->executeTV(m_TVClient, "GetTimeZone_Offset", ""));
  unsigned int minutes = 0;
  if (!ReadNumber(answer, "%u", minutes)) {
    return 0;
  }
  if (minutes == UINT32_MAX) {
    CloseTV();
    return 0;
  }
  m_TimeZoneOffset = static_cast<int32_t>(minutes);
  return m_TimeZoneOffset;
}

uint32_t VELLocaleInstance::ConvertEpochToLocalTime(unsigned int seconds) {
  PosixMutexGuard guard(s_lock);
  if (!OpenTV()) {
    return 0;
  }
  char text[512] = {};
  ::snprintf(text, sizeof(text), "%u", seconds);
  const Answer answer(GetVelClientOperations()->executeTV(m_TVClient, "ConvertEpochToLocalTime", text));
  unsigned long long local = 0;
  return ReadNumber(answer, "%llu", local) ? static_cast<uint32_t>(local) : 0;
}

int32_t getEpochTime() {
  LoadVelClientOperations();
  return VELLocaleInstance::m_LocaleInstance.GetEpochOffset();
}

int32_t getTimeZone_Offset() {
  LoadVelClientOperations();
  return VELLocaleInstance::m_LocaleInstance.GetTimeZoneOffset();
}

uint32_t ConvertEpochToLocalTime(unsigned int seconds) {
  LoadVelClientOperations();
  return VELLocaleInstance::m_LocaleInstance.ConvertEpochToLocalTime(seconds);
}
