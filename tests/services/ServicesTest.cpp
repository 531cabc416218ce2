// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <limits.h>
#include <unistd.h>

#include <fstream>
#include <map>

#include "support/KernelFixture.h"

class ServicesTest : public KernelFixture {};

static int CompareInts(const void* left, const void* right) {
  return *static_cast<const int*>(left) - *static_cast<const int*>(right);
}

TEST_F(ServicesTest, MemoryAndTextAsInTheCLibrary) {
  char text[64] = "abcdef";
  EXPECT_EQ(kernel->memmove(text + 2, text, 4), text + 2);
  EXPECT_EQ(kernel->memcpy(text, "xy", 2), text);
  EXPECT_EQ(kernel->memset(text + 2, 'z', 2), text + 2);
  EXPECT_STREQ(text, "xyzzcd");
  EXPECT_GT(kernel->memcmp("a\0c", "a\0b", 3), 0);
  EXPECT_EQ(kernel->memcmp("a\0c", "a\0b", 2), 0);
  int numbers[] = {3, -1, 2, 0};
  kernel->qsort(numbers, 3, sizeof(int), reinterpret_cast<void*>(&CompareInts));
  EXPECT_EQ(std::vector<int>(numbers, numbers + 4), (std::vector<int>{-1, 2, 3, 0}));

  const unsigned short units[] = {0x41, 0x100, 0, 0x42};
  EXPECT_EQ(kernel->wcslen(units), 2U);
  EXPECT_EQ(kernel->strlen("four"), 4U);
  EXPECT_EQ(kernel->strlen(nullptr) + kernel->wcslen(nullptr), 0U);
  EXPECT_TRUE(kernel->strcmp("abc", "abd") < 0 && kernel->strcmp("a", "A") > 0);
  EXPECT_TRUE(kernel->strncmp("abc", "abd", 2) == 0 && kernel->strncmp("abd", "abc", 3) > 0);
  EXPECT_TRUE(kernel->strcasecmp("ABC", "abc") == 0 && kernel->strcasecmp("AB", "abc") < 0);
  EXPECT_TRUE(kernel->strncasecmp("ABCx", "abcy", 3) == 0 && kernel->strncasecmp("ABCx", "abcy", 4) < 0);
  EXPECT_EQ(kernel->strcat(kernel->strcpy(text, "one"), " none"), text);
  EXPECT_EQ(kernel->strstr(text, "none"), text + 4);
  EXPECT_EQ(kernel->strchr(text, 'n'), text + 1);
  EXPECT_EQ(kernel->strrchr(text, 'n'), text + 6);

  EXPECT_EQ(kernel->sprintf(text, "%s %d %lld %.2f %c", "text", -1, 1LL << 40, 0.25, 'c'), 28);
  EXPECT_STREQ(text, "text -1 1099511627776 0.25 c");
  EXPECT_EQ(kernel->snprintf(text, 5, "%d-%s", 12, "long"), 7);
  EXPECT_STREQ(text, "12-l");
  EXPECT_EQ(text[5], '-') << "behind the size nothing is written";
}

TEST_F(ServicesTest, NumbersAsInTheCLibrary) {
  char* end = nullptr;
  EXPECT_EQ(kernel->strtol(" -0x1Fz", &end, 0), -31);
  EXPECT_STREQ(end, "z");
  EXPECT_EQ(kernel->strtoul("777", nullptr, 8), 511U);
  EXPECT_EQ(kernel->strtoq("-9223372036854775808", &end, 10), LLONG_MIN);
  errno = 0;
  EXPECT_EQ(kernel->strtoul("99999999999999999999999", &end, 10), ULONG_MAX);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(kernel->strtod("-2.5e3x", &end), -2500.0);
  EXPECT_STREQ(end, "x");
}

TEST_F(ServicesTest, StrncpyTermAlwaysTerminates) {
  const std::pair<unsigned long, std::string> kRows[] = {{0, "####"},  {1, ""},       {4, "abc"},
                                                         {6, "abcde"}, {7, "abcdef"}, {ULONG_MAX, "abcdef"}};
  for (const auto& row : kRows) {
    char text[] = "####\0####";
    std::string expected(text, sizeof(text));  // behind the terminating zero nothing changes
    expected.replace(0, row.second.size() + 1, row.second.c_str(), row.second.size() + 1);
    kernel->strncpyTerm(text, "abcdef", row.first);
    EXPECT_EQ(std::string(text, sizeof(text)), expected);
  }
  char text[] = "####";
  kernel->strncpyTerm(text, nullptr, 4);
  kernel->strncpyTerm(nullptr, "abc", 4);
  EXPECT_STREQ(text, "");
}

static std::map<std::string, unsigned long long> ReadMeminfo() {
  std::map<std::string, unsigned long long> bytes;
  std::ifstream file("/proc/meminfo");
  unsigned long long kibibytes = 0;
  for (std::string label, unit; file >> label >> kibibytes; std::getline(file, unit)) {
    bytes[label] = kibibytes * 1024;
  }
  return bytes;
}

TEST_F(ServicesTest, MemoryInfoIsThatOfTheSystem) {
  unsigned long long memTotal = 1, memFree = 1, swapTotal = 1, swapFree = 1;
  std::map<std::string, unsigned long long> before, after;
  do {  // until nobody took memory in between
    before = ReadMeminfo();
    kernel->GetMemoryInfo(memTotal, memFree, swapTotal, swapFree);
    after = ReadMeminfo();
  } while (before["MemFree:"] != after["MemFree:"] || before["SwapFree:"] != after["SwapFree:"]);
  EXPECT_GT(memTotal, 0U);
  EXPECT_EQ(memTotal, after["MemTotal:"]);
  EXPECT_EQ(memFree, after["MemFree:"]);
  EXPECT_EQ(swapTotal, after["SwapTotal:"]);
  EXPECT_EQ(swapFree, after["SwapFree:"]);
  EXPECT_EQ(kernel->GetProcessID(), static_cast<unsigned long>(getpid()));
}
