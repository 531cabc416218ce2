// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <charconv>
#include <sstream>

#include "CrashReport.h"

namespace {

// As the reports spell it.
constexpr char kBorder[] = "+------------------------------------------------------------------------------+";
constexpr char kTitle[] = "+---  Exception Handler";

/// Returns what stands behind the key that the line starts with.
std::optional<std::string> After(const std::string& key, const std::string& line) {
  return line.compare(0, key.size(), key) == 0 ? std::optional(line.substr(key.size())) : std::nullopt;
}

std::optional<uint32_t> ToNumber(const std::string& text) {
  uint32_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return text == std::to_string(number) ? std::optional(number) : std::nullopt;
}

struct Mapping {
  uint64_t start = 0;
  uint64_t end = 0;
  std::string permissions;
  std::string name;  // a file's path, a name in brackets, or empty
};

std::optional<Mapping> ToMapping(const std::string& line) {
  Mapping mapping;
  char dash = 0;
  char colon = 0;
  uint64_t number = 0;  // offset, device, inode: only their form counts
  std::istringstream text(line);
  text >> std::hex >> mapping.start >> dash >> mapping.end >> mapping.permissions;
  text >> number >> number >> colon >> number >> std::dec >> number;
  if (!text || dash != '-' || colon != ':' || mapping.permissions.size() != 4 ||
      mapping.permissions.find_first_not_of("rwxps-") != std::string::npos || mapping.start >= mapping.end) {
    return std::nullopt;
  }
  std::getline(text >> std::ws, mapping.name);
  return mapping;
}

/// Returns whether a line that breaks off is a mapping's. A name in brackets is whole, though its line feed was lost.
bool IsTornMapping(const std::string& line) {
  const size_t rest = line.find_first_not_of("0123456789abcdef-");
  return !line.empty() && rest != 0 && (rest == std::string::npos || line[rest] == ' ') && line.back() != ']';
}

/// Puts the lines of a log into reports.
class Parser {
 public:
  /// whole: false if the line breaks off.
  void AddLine(size_t number, const std::string& text, bool whole) {
    if (const size_t title = text.find(kTitle); title != std::string::npos) {
      m_prefix = title;
      return Start(number);
    }
    const std::string line = text.size() < m_prefix ? text : text.substr(m_prefix);
    if (const auto signal = After("siginal\t\t:", line); signal && whole) {
      ChooseReport(number);
      m_reports[m_current].signal = signal;
    } else if (!m_reports.empty() && m_reports[m_current].hasMap) {
      AddToMap(m_reports[m_current], line, whole);
    } else if (!m_reports.empty() && m_reports[m_current].signal && whole) {
      AddDetail(m_reports[m_current], line);
    }
  }

  std::vector<CrashReport> TakeReports() { return std::move(m_reports); }

 private:
  void Start(size_t number) {
    m_current = m_reports.size();
    m_reports.emplace_back().line = number;
  }

  // Details belong to the latest heading that has none yet: two threads that crash at once write two headings, then the
  // details of both. They stand alone if the log does not reach back to their heading.
  void ChooseReport(size_t number) {
    const auto heading =
        std::find_if(m_reports.rbegin(), m_reports.rend(), [](const CrashReport& report) { return !report.signal; });
    if (heading == m_reports.rend()) {
      return Start(number);
    }
    m_current = static_cast<size_t>(m_reports.rend() - heading) - 1;
  }

  static void AddDetail(CrashReport& report, const std::string& line) {
    if (After("memory map:", line)) {
      report.hasMap = true;
    } else if (const auto text = After("description\t:", line); text && !text->empty() && !report.description) {
      report.description = text;
    } else if (!report.description && After("signalNumber:", line)) {
      report.description = line;  // this one starts on a line of its own
    } else if (auto process = ToNumber(After("process id\t:", line).value_or("")); process && !report.process) {
      report.process = process;
    } else if (auto user = ToNumber(After("user id\t\t:", line).value_or("")); user && !report.user) {
      report.user = user;
    }
  }

  static void AddToMap(CrashReport& report, const std::string& line, bool whole) {
    if (!whole && IsTornMapping(line)) {
      report.mapTorn = true;
    } else if (After("opening memroy map failed!", line)) {
      report.mapFailed = report.mapEnd == 0;
    } else if (const auto mapping = ToMapping(line)) {
      AddMapping(report, *mapping);
    }
  }

  static void AddMapping(CrashReport& report, const Mapping& part) {
    if (part.start < report.mapEnd) {
      return;  // maps ascend: this is a second thread's copy, or another program's
    }
    report.mapEnd = part.end;
    report.mapHasStack = report.mapHasStack || part.name == "[stack]";
    if (part.name[0] != '/') {
      return;
    }
    auto module = std::find_if(report.modules.begin(), report.modules.end(),
                               [&part](const MappedModule& candidate) { return candidate.name == part.name; });
    if (module == report.modules.end()) {
      module = report.modules.insert(module, {part.name, part.start, 0, {}});
    }
    module->size = part.end - module->base;
    module->permissions.push_back(part.permissions);
  }

  std::vector<CrashReport> m_reports;
  size_t m_current = 0;
  size_t m_prefix = 0;
};

}  // namespace

std::vector<CrashReport> ReadCrashReports(std::istream& log) {
  Parser parser;
  std::string line;  // none stands before the first
  bool whole = false;
  size_t number = 0;
  for (std::string next; std::getline(log, next); line.swap(next)) {
    if (!next.empty() && next.back() == '\r') {
      next.pop_back();
    }
    // A heading starts with a line feed: what stands directly before it has none of its own and broke off.
    parser.AddLine(number++, line, next.find(kBorder) == std::string::npos);
    whole = !log.eof();
  }
  parser.AddLine(number, line, whole);
  return parser.TakeReports();
}
