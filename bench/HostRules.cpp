// SPDX-License-Identifier: Apache-2.0
// What a start of the kernel cannot do without, by hand: libiconv is there, the platform's library is asked for the
// time and the answer is read as text, the clock is read, two recursive mutexes and a key for each thread's object are
// made.
#include <CVelPluginWrapper.h>
#include <pthread.h>
#include <stdio.h>
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
  bool read = false;
  {
    PosixRecursiveMutex state;
    PosixRecursiveMutex modules;
    pthread_key_t currentThread = 0;
    ::pthread_key_create(&currentThread, nullptr);
    TimeClient client;
    if (client.Open("Time", "1.000", "Time") != 0) {
      const std::string answer = client.Execute("GetEpochTime", "", "", "", "");
      unsigned int seconds = 0;
      timespec kernelTime = {};
      read = !answer.empty() && ::sscanf(answer.c_str() + 1, "%u", &seconds) == 1 &&
             ::clock_gettime(CLOCK_MONOTONIC, &kernelTime) == 0;
      client.Close();
    }
    ::pthread_key_delete(currentThread);
  }
  return read ? EndHost(argc) : 1;
}
