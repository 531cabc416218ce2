// SPDX-License-Identifier: Apache-2.0
// A service's answers are kept for the life of a process, so every case asks in a child process. Its standard error
// tells the answers and, in between, the calls that the library got.
#include <fcntl.h>
#include <time.h>

#include <gtest/gtest.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>
#include <ipl/LocaleService.h>

/// Stands before the C library's.
extern "C" IPL_API time_t time(time_t*) noexcept { return 1000; }

static const std::string kOpenTV = "Open TV 1.000 TV\n", kZone = "Execute GetTimeZone_Offset \n";
static const std::string kOpenTime = "Open Time 1.000 Time\n", kEpoch = "Execute GetEpochTime \n";
static const std::string kEnd = "Close\ndestroy\n";

static void Say(int64_t answer) { fprintf(stderr, "%lld\n", static_cast<long long>(answer)); }
static void Zone(const char* answer) { setenv("IPL_VEL_TIMEZONE", answer, 1), Say(getTimeZone_Offset()); }
static void Epoch(const char* answer) { setenv("IPL_VEL_EPOCH", answer, 1), Say(getEpochTime()); }
static void Local(const char* answer, unsigned t) {
  setenv("IPL_VEL_LOCALTIME", answer, 1), Say(ConvertEpochToLocalTime(t));
}

static void Expect(const std::string& said, void (*ask)()) {
  EXPECT_EXIT((fcntl(2, F_SETFL, O_APPEND), ask(), exit(0)), testing::ExitedWithCode(0), testing::Eq(said));
}

/// Says local time at 7 ns GMT, GMT at start (less the kernel's time, if so asked), and a local time that was set.
static void RunKernel(bool lessKernelTime) {
  constexpr int64_t kUnit = 1000000000000;  // longer than a test
  auto* kernel = static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule());
  IPLModule_IPLKernel_InitializeKernel(0, nullptr);
  Say(kernel->ConvertGMTToLocal(7).GetNanoseconds());
  Say((kernel->GetTimeGMT().GetNanoseconds() - lessKernelTime * kernel->GetKernelTime().GetNanoseconds()) / kUnit);
  kernel->SetTimeLocal(1800000 * kUnit);
  Say(kernel->GetTimeLocal().GetNanoseconds() / kUnit);
  IPLModule_IPLKernel_UnloadModule(kernel);
}

TEST(StandIn, IsAskedUntilThereIsAnAnswerToKeep) {
  Expect(kOpenTV + kZone + "60\n60\n" + kEnd, [] { Zone("060"), Zone("05"); });
  Expect(kOpenTV + kZone + "0\n0\n" + kEnd, [] { Zone("x0"), Zone("x5"); });
  const std::string refused = kOpenTV + kZone + kEnd + "0\n";
  Expect(refused + refused + kOpenTV + kZone + "-60\n-60\n" + kEnd,
         [] { Zone("x-1"), Zone("04294967295"), Zone("0-60"), Zone("x-1"); });
  Expect(kOpenTV + kZone + "0\n" + kZone + "0\n" + kZone + "0\n" + kZone + "60\n" + kEnd,
         [] { Zone(""), Zone("7"), Zone("xabc"), Zone("x60"); });
  Expect(kOpenTime + kEpoch + "0\n" + kEpoch + "0\n" + kEpoch + "0\n" + kEpoch + "500\n500\n" + kEnd,
         [] { Epoch(""), Epoch("x"), Epoch("01000"), Epoch("x1500"), Epoch("x1600"); });
  Expect(kOpenTime + kEpoch + "-1001\n" + kEnd, [] { Epoch("04294967295"); });
  const std::string ask = "Execute ConvertEpochToLocalTime ";
  Expect(kOpenTV + ask + "4294967295\n7\n" + ask + "0\n8\n" + ask + "1\n0\n" + ask + "1\n0\n" + kZone + "5\n" + kEnd,
         [] { Local("x4294967303", UINT32_MAX), Local("x8", 0), Local("x", 1), Local("", 1), Zone("x5"); });
  const std::string failed = kOpenTV + "destroy\n0\n";
  Expect(failed + failed + kOpenTV + kZone + "60\n" + kEnd, [] {
    setenv("IPL_VEL_OPEN", "0", 1), Zone("x60"), Local("x5", 5);
    setenv("IPL_VEL_OPEN", "1", 1), Zone("x60");
  });
  setenv("IPL_VEL_EPOCH", "x2000001000", 1);
  setenv("IPL_VEL_TIMEZONE", "x-300", 1);
  const std::string calls = kOpenTime + kEpoch + kOpenTV + kZone;
  Expect(calls + "-17999999999993\n2000000\n1800000\n" + kEnd + kEnd, [] { RunKernel(false); });
  setenv("IPL_VEL_EPOCH", "x1001", 1);  // earlier than the kernel's own time
  setenv("IPL_VEL_TIMEZONE", "x60", 1);
  Expect(calls + "3600000000007\n0\n1800000\n" + kEnd + kEnd, [] { RunKernel(true); });
}

// Another library, the first on the library path, is used; its own state lives until the connection was closed.
TEST(OtherLibrary, IsUsedAndItsExceptionsAreFailures) {
  const std::string open = "construct\nOpen TV1.000TV\n", execute = "Execute GetTimeZone_Offset\n";
  const std::string destroy = "destroy xxx\n", end = "Close\n" + destroy + "gone\n";
  Expect(open + execute + "60\n" + end, [] { Zone("x5"); });
  Expect("construct\n0\n" + open + destroy + "0\n" + open + execute + "0\n" + execute + "60\n" + end, [] {
    for (const char* operation : {"construct", "Open", "Execute", "Close"}) {
      setenv("OTHER_VEL_THROWS", operation, 1);
      Zone("x5");
    }
  });
}

TEST(NoLibrary, GmtIsKernelTimeAndLocalTimeIsGmt) {
  Expect("0\n0\n0\n7\n0\n1800000\n", [] { Zone("x60"), Epoch("x5"), Local("x5", 5), RunKernel(true); });
}
