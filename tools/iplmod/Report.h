// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_IPLMOD_REPORT_H
#define IPL_TOOLS_IPLMOD_REPORT_H

#include "ElfFile.h"

struct Finding {
  std::string name;
  std::string severity;  // "error": it keeps the module from being loaded; or "warning"
  std::string text;
};

/// What is to be said about one file.
struct Report {
  std::string file;
  std::vector<std::string> modules;          // the names by which the kernel finds it
  std::map<std::string, std::string> needs;  // the newest version of each family: GLIBC, GLIBCXX, ...
  std::vector<Finding> findings;
  bool loads = true;

  void Error(const char* name, const std::string& text) {
    loads = false;
    findings.push_back({name, "error", text});
  }
  void Warn(const char* name, const std::string& text) { findings.push_back({name, "warning", text}); }
};

/// What the kernel looks up by name, and whether stack traces pass through it.
void CheckEntries(const ElfFile& file, Report& report);
/// What the file is: its machine, which has to be that of another file, and what keeps it from being unloaded or moved.
void CheckFile(const ElfFile& file, const ElfFile& other, Report& report);
/// Libraries, versions and symbols that the file needs of the kernel, which may be null, and of a root file system.
void CheckNeeds(const ElfFilePtr& file, const ElfFilePtr& kernel, const std::string& root, Report& report);

void PrintText(const std::vector<Report>& reports);
void PrintJson(const std::vector<Report>& reports);

#endif  // IPL_TOOLS_IPLMOD_REPORT_H
