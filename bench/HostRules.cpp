// SPDX-License-Identifier: Apache-2.0
// What a start of the kernel cannot do without, by hand: libiconv is there, the platform's library is asked for the
// time, two recursive mutexes are made.
#include <CVelPluginWrapper.h>
#include <stdlib.h>
#include <time.h>

#include <string>

#include "Host.h"
#include "Posix.h"

namespace {

class TimeClient : public vel::CVelPluginWrapper {
 public:
  TimeClient() : CVelPluginWrapper(vel::CClientAppFactory::VEL_CLIENT_TYPE(0)) {}
  int OnEvent(int, std::string, std::string) override { return 1; }
};

}  // namespace

int main(int argc, char**) {
  {
    PosixRecursiveMutex state;
    PosixRecursiveMutex modules;
    TimeClient client;
    if (client.Open("Time", "1.000", "Time") == 0) {
      const std::string answer = client.Execute("GetEpochTime", "", "", "", "");
      volatile long offset = ::strtol(answer.c_str(), nullptr, 10) - static_cast<long>(::time(nullptr));
      static_cast<void>(offset);
      client.Close();
    }
  }
  return EndHost(argc);
}
