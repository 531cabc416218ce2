// SPDX-License-Identifier: Apache-2.0
#include <iostream>

#include <nlohmann/json.hpp>

#include "Report.h"

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Finding, name, severity, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Report, file, modules, loads, needs, findings)

void PrintText(const std::vector<Report>& reports) {
  for (const Report& report : reports) {
    for (const Finding& finding : report.findings) {
      std::cout << report.file << ": " << finding.name << ": " << finding.text << "\n";
    }
    std::cout << report.file << (report.loads ? ": loads" : ": does not load");
    for (const auto& [family, version] : report.needs) {
      std::cout << (family == report.needs.begin()->first ? ", needs " : " ") << version;
    }
    std::cout << "\n";
  }
}

void PrintJson(const std::vector<Report>& reports) {
  // Names are bytes, JSON is UTF-8.
  std::cout << nlohmann::json(reports).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}
