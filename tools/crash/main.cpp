// SPDX-License-Identifier: Apache-2.0
// ipl-crash: finds the kernel's crash reports in logs and prints them for a reader, or for a program.
#include <cerrno>
#include <cstring>
#include <fstream>

#include "../CommandLine.h"
#include "CrashPrinter.h"

namespace {

constexpr int kFailureStatus = 2;

int Run(const std::vector<std::string>& sources, bool json) {
  bool failed = false;
  std::vector<CrashReport> reports;
  for (const std::string& source : sources) {
    std::ifstream file;
    errno = 0;
    if (source != "-") {
      file.open(source, std::ios::binary);
    }
    std::istream& log = source == "-" ? std::cin : file;
    for (CrashReport& report : ReadCrashReports(log)) {
      report.source = source;
      reports.push_back(std::move(report));
    }
    if (log.bad() || (source != "-" && !file.is_open())) {
      std::cerr << "ipl-crash: cannot read '" << source << "': " << std::strerror(errno) << "\n";
      failed = true;
    }
  }
  json ? PrintJson(std::cout, reports) : PrintText(std::cout, reports);
  if (!failed && reports.empty()) {
    std::cerr << "ipl-crash: no report found\n";
    return 1;
  }
  return failed ? kFailureStatus : 0;
}

int Main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);  // errors of standard input can be told from its end
  CLI::App app("Finds the kernel's crash reports in logs and prints what they say.", "ipl-crash");
  std::vector<std::string> sources = {"-"};
  bool json = false;
  app.add_flag("--json", json, "Print one JSON array with an object for each report");
  app.add_option("REPORT", sources, "The logs; \"-\", or none, is standard input");
  app.footer(
      "Exit status: 0 if there is a report, 1 if there is none, 2 for a mistake on the command line, for a file\n"
      "that cannot be read (the others are read all the same), or if the result cannot be written.");
  return ParseAndRun(app, argc, argv, [&] { return Run(sources, json); });
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool("ipl-crash", kFailureStatus, [&] { return Main(argc, argv); });
}
