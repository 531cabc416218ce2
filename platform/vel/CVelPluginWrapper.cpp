// SPDX-License-Identifier: Apache-2.0
// A stand-in for the device's platform extension library. It answers from this machine's clock and zone, or as the
// environment says (docs/platform.md):
//   IPL_VEL_OPEN=0             no service can be reached
//   IPL_VEL_EPOCH=TEXT         the whole answer to "GetEpochTime"
//   IPL_VEL_TIMEZONE=TEXT      the whole answer to "GetTimeZone_Offset"
//   IPL_VEL_LOCALTIME=TEXT     the whole answer to "ConvertEpochToLocalTime"
//   IPL_VEL_LOG=FILE           every call is appended to FILE, a line each
#include "CVelPluginWrapper.h"

#include <stdlib.h>
#include <time.h>

#include <fstream>

namespace vel {

namespace {

void Log(const std::string& line) {
  const char* file = ::getenv("IPL_VEL_LOG");
  if (file != nullptr) {
    std::ofstream(file, std::ios::app) << line << std::endl;
  }
}

long ZoneSeconds(time_t when) {
  struct tm local = {};
  ::tzset();
  ::localtime_r(&when, &local);
  return local.tm_gmtoff;
}

// The number behind the one character that every answer starts with.
std::string Answer(long long number) { return "0" + std::to_string(number); }

std::string AnswerFromClock(const std::string& command, const std::string& parameter) {
  const time_t now = ::time(nullptr);
  if (command == "GetEpochTime") {
    return Answer(now);
  }
  if (command == "GetTimeZone_Offset") {
    return Answer(ZoneSeconds(now) / 60);
  }
  if (command == "ConvertEpochToLocalTime") {
    const long long seconds = ::strtoll(parameter.c_str(), nullptr, 10);
    return Answer(seconds + ZoneSeconds(static_cast<time_t>(seconds)));
  }
  return std::string();
}

const char* SetAnswer(const std::string& command) {
  if (command == "GetEpochTime") {
    return ::getenv("IPL_VEL_EPOCH");
  }
  if (command == "GetTimeZone_Offset") {
    return ::getenv("IPL_VEL_TIMEZONE");
  }
  return command == "ConvertEpochToLocalTime" ? ::getenv("IPL_VEL_LOCALTIME") : nullptr;
}

}  // namespace

CVelPluginWrapper::CVelPluginWrapper(CClientAppFactory::VEL_CLIENT_TYPE) {}

CVelPluginWrapper::~CVelPluginWrapper() { Log("destroy"); }

// NOLINTBEGIN(performance-unnecessary-value-param): the signatures are the device's.
int CVelPluginWrapper::OnEvent(int, std::string, std::string) { return 0; }

int CVelPluginWrapper::Open(std::string service, std::string version, std::string instance) {
  Log("Open " + service + " " + version + " " + instance);
  const char* open = ::getenv("IPL_VEL_OPEN");
  return open != nullptr && std::string(open) == "0" ? 0 : 1;
}

std::string CVelPluginWrapper::Execute(std::string command, std::string p1, std::string, std::string, std::string) {
  Log("Execute " + command + " " + p1);
  const char* answer = SetAnswer(command);
  return answer != nullptr ? std::string(answer) : AnswerFromClock(command, p1);
}

// NOLINTEND(performance-unnecessary-value-param)

int CVelPluginWrapper::Close() {
  Log("Close");
  return 1;
}

}  // namespace vel
