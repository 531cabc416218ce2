// SPDX-License-Identifier: Apache-2.0
// The logs that ipl-crash reads, made from reports of real crashes.
#include <fstream>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "crash/CrashPrinter.h"

using nlohmann::json;

static std::string Sample(const std::string& target) {
  std::ifstream file(TEST_FOLDER "/" + target + "-report.txt");
  return {std::istreambuf_iterator<char>(file), {}};
}

static std::vector<CrashReport> Read(const std::string& log) {
  std::istringstream stream(log);
  return ReadCrashReports(stream);
}

static json ReadJson(const std::string& log) {
  std::ostringstream out;
  PrintJson(out, Read(log));
  return json::parse(out.str());
}

TEST(CrashReportTest, LogsOfAllKinds) {
  const std::string native = Sample("native");
  const size_t afterHeading = native.find("\nsiginal");
  const size_t afterDetails = native.find("\nmemory");
  const std::string heading = native.substr(0, afterHeading);
  const std::string details = native.substr(afterHeading, afterDetails - afterHeading);
  const std::string map = native.substr(afterDetails);
  const std::string torn = native.substr(0, native.size() - 5);
  const std::string term = heading + "\nsiginal\t\t:SIGTERM\ndescription\t:\nsignalNumber:15 signalCode:0\n";
  const auto withLineFeeds = [&](const char* text) { return std::regex_replace(native, std::regex("\n"), text); };
  const json modules = ReadJson(native).at(0).at("modules");
  const std::string whole = R"({"signal":"SIGSEGV","description":"address not mapped to object","process":3472,
      "user":0,"missing":[],"cutOff":false,"mapFailed":false,"modules":)" +
                            modules.dump() + "}";
  const std::pair<std::string, std::string> cases[] = {
      {"before\n" + native + "Aborted", whole},
      {withLineFeeds("\r\nuser id\t\t:x\r\n1-2 r--p noise\r\n"), whole},
      {withLineFeeds("\nNov 24 16:00:00 tv app[7]: "), whole},
      {native.substr(0, native.size() - 1), whole},
      {details + map, whole},
      {torn + native, R"({"cutOff":true,"missing":["end of the memory map"],"line":3},)" + whole},
      {heading + heading + details + details + map + map, whole + R"(,{"missing":["memory map"],"process":3472})"},
      {heading + "\n" + native, R"({"signal":null,"cutOff":true,"modules":[]},)" + whole},
      {term + "process id\t:7\nuser id\t\t:8\n\nmemory map:\nopening memroy map failed!",
       R"({"signal":"SIGTERM","description":"signalNumber:15 signalCode:0","mapFailed":true,"missing":[],"user":8})"},
      {"siginal: none\nmemory map:\n" + map, ""},
  };
  for (const auto& [log, expectation] : cases) {
    const json expected = json::parse("[" + expectation + "]");
    const json found = ReadJson(log);
    ASSERT_EQ(found.size(), expected.size()) << log;
    for (size_t i = 0; i < expected.size(); ++i) {
      for (const auto& [key, value] : expected[i].items()) {
        EXPECT_EQ(found[i].at(key), value) << key << " in " << log;
      }
    }
  }
}

TEST(CrashReportTest, ACutAnywhereInventsNothing) {
  for (const char* target : {"native", "arm"}) {
    const std::string sample = Sample(target);
    const CrashReport whole = Read(sample).at(0);
    for (size_t size = 1; size <= sample.size(); ++size) {
      const std::vector<CrashReport> reports = Read(sample.substr(0, size));
      ASSERT_EQ(reports.size(), size < sample.find("Handler") + 7 ? 0U : 1U) << size;
      const CrashReport report = reports.empty() ? CrashReport() : reports[0];
      const bool lineIsWhole = sample[size - 1] == '\n' || sample[size - 1] == ']';
      EXPECT_EQ(FindMissing(report).empty(), lineIsWhole && size >= sample.find("[stack]") + 7) << size;
      EXPECT_EQ(report.signal.value_or(*whole.signal), whole.signal);
      EXPECT_EQ(report.description.value_or(*whole.description), whole.description);
      EXPECT_EQ(report.process.value_or(*whole.process), whole.process);
      for (size_t i = 0; i < report.modules.size(); ++i) {
        EXPECT_EQ(report.modules[i].name, whole.modules.at(i).name) << size;
      }
    }
  }
}
