// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <regex>

#include "host/HostProgram.h"

static std::string Repeat(size_t count, const std::string& text) {
  std::string repeated;
  while (count-- > 0) {
    repeated += text;
  }
  return repeated;
}

using Examples = HostProgram;

TEST_F(Examples, EachMistakeIsNamedInOneLineAndGivesStatus2) {
  const std::string notTime = ": not a time of day, HH:MM or HH:MM:SS";
  const std::string notDuration = ": not a duration, a whole number of ms, s, min or h";
  const std::vector<std::pair<Arguments, std::string>> cases = {
      {{"TextReader", "x", "--bogus"}, "--bogus: unknown option"},
      {{"TextReader", "x", "--charset"}, "--charset: needs a value"},
      {{"TextReader", "x", "--charset", "no-such"}, "no-such: unknown character set"},
      {{"TextReader", "--stamp", "--"}, "no file is named behind '--'"},
      {{"AlarmClock"}, "no alarm: give --at HH:MM or --in DURATION"},
      {{"AlarmClock", "--in", "0s", "--at"}, "--at: needs a value"},
      {{"AlarmClock", "--in", "0s", "stray"}, "stray: unexpected argument"},
      {{"AlarmClock", "--in", "0s", "--at", "24:00"}, "--at 24:00" + notTime},
      {{"AlarmClock", "--at", "7:30"}, "--at 7:30" + notTime},
      {{"AlarmClock", "--at", "07:30:60"}, "--at 07:30:60" + notTime},
      {{"AlarmClock", "--in", "5"}, "--in 5" + notDuration},
      {{"AlarmClock", "--in", "ms"}, "--in ms" + notDuration},
      {{"AlarmClock", "--in", "2562048h"}, "--in 2562048h" + notDuration},  // one more than fits
      {{"Crash"}, "nothing to do without '--crash' behind '--'"},
  };
  for (const auto& [arguments, message] : cases) {
    EXPECT_EQ(Run(With({}, arguments[0], {arguments.begin() + 1, arguments.end()})), 2);
    EXPECT_EQ(m_out + m_err, arguments[0] + ": " + message + "\n");
  }
}

TEST_F(Examples, FilesOfACharacterSetAreReadWholeWhereverPiecesEnd) {
  const std::string lineOf2022 = "a\x1B$B$\"$$\x1B(B\n";
  const struct {
    const char* charSet;
    std::string bytes;
    size_t counts[3];                                // lines, words, characters
    std::vector<std::pair<size_t, size_t>> skipped;  // from which byte on, how many
  } cases[] = {
      {"", "a" + Repeat(40000, "ж"), {0, 1, 40001}, {}},  // UTF-8 as such; a piece has 65536 bytes
      {"", Repeat(30000, "क"), {0, 1, 30000}, {}},
      {"", "aa" + Repeat(30000, "क"), {0, 1, 30002}, {}},
      {"", "a" + Repeat(20000, "𝔘"), {0, 1, 20001}, {}},
      {"", "aa" + Repeat(20000, "𝔘"), {0, 1, 20002}, {}},
      {"", "aaa" + Repeat(40000, "𝔘"), {0, 1, 40003}, {}},
      {"Shift_JIS", "a" + Repeat(50000, "\x82\xA0"), {0, 1, 50001}, {}},
      {"ISO-2022-JP", Repeat(10000, lineOf2022), {10000, 10000, 40000}, {}},
      {"UTF-16", "\xFF\xFE" + Repeat(40000, {"\x42\x30\0\0\n\0", 6}), {40000, 40000, 120000}, {}},
      {"UTF-16", Repeat(30000, {"\xD8\x3D\xDE\0", 4}), {0, 1, 30000}, {}},
      {"KOI8-R", {"\xD0\xD2\0\xC9\n", 5}, {1, 2, 5}, {}},
      {"CP1255", "\xE0\n\xE0", {1, 2, 3}, {}},  // the set holds the last letter back
      {"Shift_JIS", "ab\x81\ncd\xFF\xFFx\x81", {1, 2, 6}, {{2, 1}, {6, 2}, {9, 1}}},
      {"ISO-2022-JP", "a\x1B$B$\"\xFF$\"\x1B(B\n", {1, 1, 4}, {{6, 1}}},
      {"ISO-2022-JP", "\x1B$BF|K", {0, 1, 1}, {{5, 1}}},
      {"UTF-8", "a\xFF" + Repeat(30000, "\xE3\x81\x82"), {0, 1, 30001}, {{1, 1}}},
      {"EUC-JP", "a\xFF\x8F\xA2", {0, 1, 1}, {{1, 3}}},
  };
  for (const auto& example : cases) {
    SCOPED_TRACE(example.charSet + std::to_string(example.bytes.size()));
    const std::string file = Write("text", example.bytes);
    const Arguments arguments =
        *example.charSet != '\0' ? Arguments{"--charset", example.charSet, file} : Arguments{file};
    EXPECT_EQ(Run(With({}, "TextReader", arguments)), example.skipped.empty() ? 0 : 1);
    EXPECT_NE(m_out.find(Row(example.counts[0], example.counts[1], example.counts[2], file)), std::string::npos);
    std::string told;
    size_t total = 0;
    for (const auto& [offset, count] : example.skipped) {
      told += "TextReader: " + file + ": not " + example.charSet + " at byte " + std::to_string(offset) +
              "; bytes skipped: " + std::to_string(count) + "\n";
      total += count;
    }
    EXPECT_EQ(m_err, total == 0 ? "" : told + "TextReader: bytes skipped in all: " + std::to_string(total) + "\n");
  }
}

TEST_F(Examples, ProgressSpeaksWhenAskedAndCountsWhatIsRead) {
  const std::string file = Write("text", "five\n");
  EXPECT_EQ(Run(With({}, "Progress", {file})), 0);
  EXPECT_EQ(m_err, "");
  const std::string fifo = Path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  Start(With({}, "Progress", {"--progress", file, fifo}));
  const int end = open(fifo.c_str(), O_WRONLY);                                // returns when the reader has opened it
  while (Content("err").find("Progress: 1/2 files, ") == std::string::npos) {  // a file rouses nobody
    usleep(1000);
  }
  close(end);
  EXPECT_EQ(Finish(), 0);
  EXPECT_TRUE(std::regex_search(m_err, std::regex("\nProgress: 2/2 files, [1-9][0-9]* bytes/s\n$"))) << m_err;
}

TEST_F(Examples, StampAndAlarmsAreInLocalTime) {
  // A zone of five and a half hours, from the platform's stand-in; GMT is the system's.
  setenv("IPL_VEL_TIMEZONE", "=330", 1);
  const auto local = [](time_t now) {
    char text[40] = "";
    now += 330 * 60;
    strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", gmtime(&now));
    return std::string(text);
  };
  const std::string file = Write("text", "x");
  std::string before = local(time(nullptr));
  EXPECT_EQ(Run(With({"--wall-clock"}, "TextReader", {"--stamp", file})), 0);
  ASSERT_EQ(m_out.find("Local time: "), 0U) << m_out;
  EXPECT_GE(m_out.substr(12, 19), before);
  EXPECT_LE(m_out.substr(12, 19), local(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));

  const time_t now = time(nullptr);
  const auto started = std::chrono::steady_clock::now();
  const std::string soon = local(now + 6).substr(11);
  EXPECT_EQ(Run(With({"--wall-clock"}, "AlarmClock", {"--at", soon, "--in", "20ms", "--in", "10ms"})), 0);
  // Not time(), which may lag behind the clock that the kernel reads.
  EXPECT_GE(std::chrono::system_clock::now(), std::chrono::system_clock::from_time_t(now + 6));
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::minutes(2));  // and not tomorrow
  const std::string stamp = "[0-9-]{10} [0-9:]{8}  ";
  EXPECT_TRUE(std::regex_match(
      m_out, std::regex(stamp + "--in 10ms\n" + stamp + "--in 20ms\n[0-9-]{10} " + soon + "  --at " + soon + "\n")))
      << m_out;
  unsetenv("IPL_VEL_TIMEZONE");
}

TEST_F(Examples, AnAlarmIsGivenUpWhenTheHostStops) {
  for (const Arguments& options : {Arguments{}, {"--fault-handler"}}) {  // which lets the first SIGTERM ask for a stop
    Start(With(options, "AlarmClock", {"--in", "24h", "--in", "1ms"}));
    ReadUntil("--in 1ms\n");
    Signal(SIGTERM);
    EXPECT_EQ(Finish(), 128 + SIGTERM);
    EXPECT_EQ(m_err, "");
  }
}

TEST_F(Examples, ACrashIsReportedIfTheHandlerIsInstalled) {
#ifdef TEST_SANITIZED
  GTEST_SKIP() << "the sanitizer takes the signal";
#endif
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
  EXPECT_EQ(Run(With({}, "Crash", {"--crash"})), -SIGSEGV);
  EXPECT_EQ(m_err.find("Exception Handler"), std::string::npos);
  EXPECT_EQ(Run(With({"--fault-handler"}, "Crash", {"--crash"})), -SIGABRT);
  EXPECT_NE(m_err.find("SIGSEGV"), std::string::npos) << m_err;
  EXPECT_NE(m_err.find("libCrash.so"), std::string::npos) << m_err;
}
