// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_CRASH_CRASHREPORT_H
#define IPL_TOOLS_CRASH_CRASHREPORT_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

/// A file, and all its mappings.
struct MappedModule {
  std::string name;
  uint64_t base = 0;
  uint64_t size = 0;                     // from the lowest address to the highest, gaps included
  std::vector<std::string> permissions;  // of the parts, by address
};

/// What one crash report says. What was cut off is empty.
struct CrashReport {
  std::string source;  // the log's path, or "-" for standard input
  size_t line = 0;     // where it starts in the log, counted from 1
  std::optional<std::string> signal;
  std::optional<std::string> description;  // in one line
  std::optional<uint32_t> process;
  std::optional<uint32_t> user;
  std::vector<MappedModule> modules;  // by lowest address
  bool hasMap = false;                // the map's heading was there
  bool mapFailed = false;             // the process could not read its own map
  bool mapTorn = false;               // the map's last line is incomplete
  bool mapHasStack = false;           // the map's line of the main thread's stack was there
  uint64_t mapEnd = 0;                // the address behind the last mapping
};

/// Returns the crash reports in a log, in the order in which they start, without their source. Lines that belong to
/// none are skipped, between the lines of a report too. If the log has a prefix of constant width before each line, it
/// is taken off. The stream is bad() afterwards if reading failed.
std::vector<CrashReport> ReadCrashReports(std::istream& log);

/// Returns the parts that were cut off, in words; none for a whole report. A map that breaks off between two lines is
/// recognised only before the line of the main thread's stack, which every map has, mostly near its end.
std::vector<std::string> FindMissing(const CrashReport& report);

#endif  // IPL_TOOLS_CRASH_CRASHREPORT_H
