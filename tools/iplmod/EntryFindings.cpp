// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "Report.h"

void CheckEntries(const ElfFile& file, Report& report) {
  std::vector<std::string> entries = {"IPLModule_PLModule_PutKernel"};
  if (report.modules.empty()) {
    report.Error("module-name", "the file is not called libNAME.so, and no --modulemap names it");
  }
  for (const std::string& module : report.modules) {
    entries.insert(entries.end(), {"IPLModule_" + module + "_ModuleLoad", "IPLModule_" + module + "_ModuleUnload"});
    if (module.size() > 47) {
      report.Error("module-name", "the kernel takes names of at most 47 bytes, unlike " + module);
    }
  }
  const auto find = [&file](auto isIt) { return std::find_if(file.defined.begin(), file.defined.end(), isIt); };
  for (const std::string& entry : entries) {
    const auto symbol = find([&entry](const ElfSymbol& it) { return it.name == entry; });
    // What a C++ compiler makes of it without extern "C".
    const std::string part = std::to_string(entry.size()) + entry;
    const auto mangled = find([&part](const ElfSymbol& it) { return it.name.find(part) != std::string::npos; });
    if (symbol == file.defined.end() && mangled != file.defined.end()) {
      report.Error("mangled-entry", mangled->name + " stands for " + entry + ", which lacks its extern \"C\"");
    } else if (symbol == file.defined.end()) {
      report.Error("missing-entry", entry);
    } else if (!file.HasUnwindEntry(symbol->value)) {
      report.Warn("no-unwind-tables", entry + ": stack traces end there; compile with -funwind-tables");
    }
  }
}
