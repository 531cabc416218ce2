// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>

#include "services/RandomHash.h"
#include "support/KernelFixture.h"

static const char* s_device = "/dev/urandom";

/// Stands before the C library's and opens something else in the place of the device.
extern "C" IPL_API FILE* fopen(const char* name, const char* mode) {
  static auto* const original = reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen64"));
  return original(name == std::string("/dev/urandom") ? s_device : name, mode);
}

struct RandomTest : KernelFixture {};

// That none comes twice, threads that set timers show.
TEST_F(RandomTest, UniqueIDsCountFromOne) {
  EXPECT_EQ(kernel->GetUniqueID(), 1U);
  EXPECT_EQ(kernel->GetUniqueID(), 2U);
}

TEST_F(RandomTest, DeviceOrElseProcessListGivesTheBytes) {
  const auto get = [this](size_t size) {  // the bytes and, behind them, what was there before
    std::string bytes(12, '#');
    return kernel->GetRandomData(&bytes[0], size) ? bytes : "failed";
  };
  setenv("PATH", "RandomTest.ps", 1);
  const auto usePs = [](const std::string& script) {
    std::filesystem::create_directory("RandomTest.ps");
    std::ofstream("RandomTest.ps/ps") << "#!/bin/sh\nPATH=/usr/bin:/bin\n" << script;
    std::filesystem::permissions("RandomTest.ps/ps", std::filesystem::perms::owner_all);
  };
  const auto countDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
  const auto descriptors = countDescriptors();
  EXPECT_TRUE(HashRandom(0) == 1235843709 && HashRandom(1) == 4006724339);
  EXPECT_TRUE(get(12) != get(12) && get(6).substr(6) == "######");
  // Of the 108,894 bytes of the last one, 10,000 are read; the signal that then ends it counts as success.
  const std::pair<const char*, std::vector<uint32_t>> kRows[] = {
      {R"(printf '1 init\n\377\n')", {0xEC083CF1, 0xC06140D5, 0x1BE920C0}},
      {R"(printf 'ab\0cd')", {0x27A47003, 0x6CDE0967, 0x7E08E67E}},
      {R"(test "$#$1" = 1-A)", {0x49A97A7D, 0x49A97A7D, 0xC8E270CB}},
      {"exec seq 20000", {0x3F755938, 0x18C38267, 0x407DFC1A}}};
  signal(SIGPIPE, SIG_IGN);  // of this process; the command must not have that from it
  for (const auto& [script, words] : kRows) {
    usePs(script);
    const std::string bytes(reinterpret_cast<const char*>(words.data()), 12);
    s_device = "/dev/null";  // there, but without a byte
    for (const size_t size : {0, 1, 4, 6, 9}) {
      EXPECT_EQ(get(size), bytes.substr(0, size) + std::string(12 - size, '#')) << script;
    }
    s_device = "/nowhere";
    auto other = std::async(std::launch::async, get, 12);
    EXPECT_TRUE(get(12) == bytes && other.get() == bytes) << script;
    // Without a standard output, either end of the pipe takes its place.
    for (const int first : {STDOUT_FILENO, STDIN_FILENO}) {
      const auto isGood = [&] { return close(first), close(STDOUT_FILENO), get(12) == bytes; };
      EXPECT_EXIT(_exit(isGood() ? 0 : 1), testing::ExitedWithCode(0), "") << script;
    }
  }
  for (const char* script : {"echo 1; exit 1", "echo 1; kill -9 $$"}) {
    usePs(script);
    EXPECT_EQ(get(6), "failed") << script;
  }
  std::filesystem::remove_all("RandomTest.ps");
  EXPECT_EQ(get(6), "failed") << "no such command";
  EXPECT_EQ(countDescriptors(), descriptors);
  EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD) << "a child is left";
}
