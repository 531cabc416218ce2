// SPDX-License-Identifier: Apache-2.0
// Counts the context switches of a process with a running kernel: idle, with a timer pending an hour away, and for each
// SetTimer and ClearTimer.
//
// The kernel runs in a child process, and the parent counts: reading /proc/PID/task/*/status runs nothing in the child.
// Between two counts the child is told to go on and tells that it is done, through pipes; each count is taken when all
// its threads sleep. So a count of calls holds one switch that is not the kernel's, when the child waits for the pipe
// again, and that one is subtracted. The count of the idle time holds none. Takes the number of idle seconds.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "TimerQueue.h"

namespace {

constexpr int kCalls = 1000;
constexpr double kBar = 2.0;         // switches a call: one to the timer thread, one back
constexpr double kAllowance = 0.25;  // for other processes, and ends of time slices, which take the processor away
constexpr int64_t kHour = int64_t{3600} * 1000000000;

/// One end of both pipes.
struct Line {
  int in;
  int out;

  void Tell() const {
    if (::write(out, "x", 1) != 1) {
      std::_Exit(1);
    }
  }
  void WaitFor() const {
    char byte = 0;
    if (::read(in, &byte, 1) != 1) {
      std::_Exit(1);  // the other process is gone
    }
  }
};

void RunChild(const Line& line) {
  const RunningKernel kernel;
  TimerQueue queue(kernel);
  std::vector<unsigned long> timers(kCalls);
  kernel->SetTimer(kHour, queue.Get(), false);
  line.Tell();
  line.WaitFor();
  for (unsigned long& timer : timers) {
    timer = kernel->SetTimer(kHour, queue.Get(), false);
  }
  line.Tell();
  line.WaitFor();
  for (const unsigned long timer : timers) {
    kernel->ClearTimer(timer, queue.Get());
  }
  line.Tell();
  line.WaitFor();
}

struct Switches {
  long voluntary = 0;
  long involuntary = 0;
  bool allAsleep = true;

  long Together() const { return voluntary + involuntary; }
  Switches Since(const Switches& before, long own) const {
    return {voluntary - before.voluntary - own, involuntary - before.involuntary, true};
  }
};

Switches CountNow(pid_t process) {
  Switches sum;
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::ifstream status(task.path() / "status");
    for (std::string line; std::getline(status, line);) {
      const size_t colon = line.find(':');
      const std::string name = line.substr(0, colon);
      if (name == "State") {
        sum.allAsleep &= line.find("S (sleeping)", colon) != std::string::npos;
      } else if (name == "voluntary_ctxt_switches") {
        sum.voluntary += std::atol(line.c_str() + colon + 1);
      } else if (name == "nonvoluntary_ctxt_switches") {
        sum.involuntary += std::atol(line.c_str() + colon + 1);
      }
    }
  }
  return sum;
}

Switches CountAsleep(pid_t process) {
  for (;;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const Switches count = CountNow(process);
    if (count.allAsleep) {
      return count;
    }
  }
}

void PrintRow(const char* what, const Switches& switches, double divisor) {
  std::printf("| %-22s | %9.3f | %11.3f | %9.3f |\n", what, static_cast<double>(switches.voluntary) / divisor,
              static_cast<double>(switches.involuntary) / divisor, static_cast<double>(switches.Together()) / divisor);
}

bool Observe(pid_t child, const Line& line, long seconds) {
  line.WaitFor();
  const Switches ready = CountAsleep(child);
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const Switches idle = CountNow(child).Since(ready, 0);

  Switches before = CountAsleep(child);
  Switches calls[2];
  for (Switches& call : calls) {
    line.Tell();
    line.WaitFor();
    const Switches after = CountAsleep(child);
    call = after.Since(before, 1);
    before = after;
  }
  line.Tell();

  std::printf("Context switches of all threads of a process\n\n");
  std::printf("| %-22s | %9s | %11s | %9s |\n", "", "voluntary", "involuntary", "together");
  std::printf("|---|---:|---:|---:|\n");
  PrintRow(("idle for " + std::to_string(seconds) + " s").c_str(), idle, 1);
  PrintRow("each SetTimer", calls[0], kCalls);
  PrintRow("each ClearTimer", calls[1], kCalls);
  // A thread that is woken may take the processor from the one that woke it, which then need not give it up by itself:
  // only both kinds together say how often the processor changed hands.
  return idle.Together() == 0 && static_cast<double>(calls[0].Together()) <= (kBar + kAllowance) * kCalls &&
         static_cast<double>(calls[1].Together()) <= (kBar + kAllowance) * kCalls;
}

}  // namespace

int main(int argc, char** argv) {
  const long seconds = argc > 1 ? std::atol(argv[1]) : 30;
  int toChild[2];
  int toParent[2];
  if (::pipe(toChild) != 0 || ::pipe(toParent) != 0) {
    return 1;
  }
  const pid_t child = ::fork();  // before any thread is there
  if (child < 0) {
    return 1;
  }
  if (child == 0) {
    ::close(toChild[1]);
    ::close(toParent[0]);
    RunChild({toChild[0], toParent[1]});
    return 0;
  }
  ::close(toChild[0]);
  ::close(toParent[1]);
  const bool good = Observe(child, {toParent[0], toChild[1]}, seconds);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!good) {
    std::printf("\nThe idle process was woken, or a call takes more than %.0f switches.\n", kBar);
  }
  return status != 0 || !good ? 1 : 0;
}
