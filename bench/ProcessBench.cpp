// SPDX-License-Identifier: Apache-2.0
// A host that starts and stops the kernel, beside one that only uses the C++ library, and hosts of the peers: the time
// from its start to its end, and the most memory that it had resident. The hosts lie beside this program.
//
// Memory is read from the host itself, in its last line, since the usage that wait4 gives begins with what the parent
// had resident when it started the child.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "Bench.h"

namespace {

std::string HostFile(const std::string& name) {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / ("bench-host-" + name);
}

void StartAndStop(State& state, const std::string& file) {
  std::array<char*, 2> arguments = {const_cast<char*>(file.c_str()), nullptr};
  while (state.KeepRunning()) {
    int status = 1;
    TimeOne(state, [&] {
      pid_t child = 0;
      if (::posix_spawn(&child, file.c_str(), nullptr, nullptr, arguments.data(), environ) == 0) {
        ::waitpid(child, &status, 0);
      }
    });
    if (status != 0) {
      state.SkipWithError("the host failed");
    }
  }
}

double ReadPeakKiB(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      double value = 0;
      status >> value;
      return value;
    }
  }
  return 0;
}

void ResidentMemory(State& state, const std::string& file) {
  std::array<char*, 3> arguments = {const_cast<char*>(file.c_str()), const_cast<char*>("wait"), nullptr};
  double peak = 0;
  while (state.KeepRunning()) {
    int in[2];
    int out[2];
    if (::pipe(in) != 0 || ::pipe(out) != 0) {
      state.SkipWithError("no pipe");
      return;
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    ::posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    pid_t child = 0;
    if (::posix_spawn(&child, file.c_str(), &actions, nullptr, arguments.data(), environ) != 0) {
      state.SkipWithError("the host did not start");
      return;
    }
    ::posix_spawn_file_actions_destroy(&actions);
    char byte = 0;
    if (::read(out[0], &byte, 1) == 1) {
      peak = ReadPeakKiB(child);
      static_cast<void>(::write(in[1], &byte, 1) == 1);
    }
    ::waitpid(child, nullptr, 0);
    for (const int end : {in[0], in[1], out[0], out[1]}) {
      ::close(end);
    }
    state.SetIterationTime(1);
  }
  state.counters["KiB"] = peak;
}

// A host of a peer that is not installed is not there.
const Registered s_registered([] {
  for (const std::string who : {"ours", "limit", "rules", "glib", "apr", "nspr", "uv", "poco", "qt", "event"}) {
    const std::string file = HostFile(who);
    if (std::filesystem::exists(file)) {
      MeasureManually("StartStop/" + who, 20, [file](State& state) { StartAndStop(state, file); });
      MeasureManually("Resident/" + who, 1, [file](State& state) { ResidentMemory(state, file); });
    }
  }
});

}  // namespace
