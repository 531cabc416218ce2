// SPDX-License-Identifier: Apache-2.0
#include "CrashReport.h"

std::vector<std::string> FindMissing(const CrashReport& report) {
  const std::pair<bool, const char*> parts[] = {
      {!report.signal, "signal"},
      {!report.description, "description"},
      {!report.process, "process"},
      {!report.user, "user"},
      {!report.hasMap, "memory map"},
      {report.hasMap && !report.mapFailed && (report.mapTorn || !report.mapHasStack), "end of the memory map"},
  };
  std::vector<std::string> missing;
  for (const auto& [isMissing, part] : parts) {
    if (isMissing) {
      missing.emplace_back(part);
    }
  }
  return missing;
}
