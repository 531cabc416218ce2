// SPDX-License-Identifier: Apache-2.0
#include "CrashPrinter.h"

#include <algorithm>
#include <cctype>
#include <iomanip>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::ordered_json;

template <typename Value>
ordered_json OrNull(const std::optional<Value>& value) {
  return value ? ordered_json(*value) : ordered_json(nullptr);
}

ordered_json ToJson(const CrashReport& report) {
  ordered_json modules = ordered_json::array();
  for (const MappedModule& module : report.modules) {
    modules.push_back(
        {{"name", module.name}, {"base", module.base}, {"size", module.size}, {"permissions", module.permissions}});
  }
  const std::vector<std::string> missing = FindMissing(report);
  return {{"source", report.source},           {"line", report.line},
          {"signal", OrNull(report.signal)},   {"description", OrNull(report.description)},
          {"process", OrNull(report.process)}, {"user", OrNull(report.user)},
          {"cutOff", !missing.empty()},        {"missing", missing},
          {"mapFailed", report.mapFailed},     {"modules", modules}};
}

std::string ToText(const ordered_json& value) {
  if (!value.is_string()) {
    return value.is_null() ? "(missing)" : value.dump();
  }
  // A log may hold anything, but it does not get to drive the terminal.
  auto text = value.get<std::string>();
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; }, '?');
  // Nor by the control characters that take two bytes of UTF-8.
  for (size_t i = 0; (i = text.find('\xC2', i)) != std::string::npos; ++i) {
    if (i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      text.replace(i, 2, "?");
    }
  }
  return text;
}

std::string Join(const ordered_json& texts, const char* separator) {
  std::string joined;
  for (const ordered_json& text : texts) {
    joined += (joined.empty() ? "" : separator) + ToText(text);
  }
  return joined;
}

void PrintTable(std::ostream& out, const ordered_json& modules) {
  size_t width = 4;
  for (const ordered_json& module : modules) {
    width = std::max(width, ToText(module["name"]).size());
  }
  out << "  NAME" << std::string(width - 4, ' ') << "                BASE        SIZE  PERMISSIONS\n";
  for (const ordered_json& module : modules) {
    out << "  " << std::left << std::setw(static_cast<int>(width)) << ToText(module["name"]) << std::right
        << std::showbase << std::hex << std::setw(20) << module["base"].get<uint64_t>() << std::dec << std::setw(12)
        << module["size"].get<uint64_t>() << "  " << Join(module["permissions"], " ") << "\n";
  }
}

}  // namespace

void PrintText(std::ostream& out, const std::vector<CrashReport>& reports) {
  for (const CrashReport& entry : reports) {
    const ordered_json report = ToJson(entry);
    out << (entry.source == "-" ? "standard input" : entry.source) << ", line " << entry.line << ":\n";
    for (const char* key : {"signal", "description", "process", "user"}) {
      out << "  " << std::left << std::setw(13) << std::string(key) + ":" << ToText(report[key]) << "\n";
    }
    if (report["cutOff"]) {
      out << "  The report is cut off. Missing: " << Join(report["missing"], ", ") << ".\n";
    }
    if (entry.mapFailed) {
      out << "  The process could not read its memory map.\n";
    }
    if (!report["modules"].empty()) {
      PrintTable(out, report["modules"]);
    }
    out << "\n";
  }
}

void PrintJson(std::ostream& out, const std::vector<CrashReport>& reports) {
  ordered_json array = ordered_json::array();
  std::transform(reports.begin(), reports.end(), std::back_inserter(array), &ToJson);
  // Paths are bytes, JSON is UTF-8.
  out << array.dump(2, ' ', false, ordered_json::error_handler_t::replace) << "\n";
}
