// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "Report.h"

namespace {

using Libraries = std::map<std::string, ElfFilePtr>;  // by the names that others need them by; null: missing

void AddNeeded(const std::string& root, const ElfFilePtr& file, Libraries& libraries, Report& report) {
  for (const std::string& name : file != nullptr ? file->texts.at(DT_NEEDED) : std::vector<std::string>()) {
    if (libraries.count(name) == 0) {
      libraries[name] = FindLibrary(root, name, file.get());
      AddNeeded(root, libraries[name], libraries, report);
      if (libraries[name] == nullptr) {
        report.Error("missing-library", name + ", needed by " + file->path);
      }
    }
  }
}

// Returns the family. Notes its newest version; GLIBC_2.34 is newer than GLIBC_2.4, and GLIBC_PRIVATE has no number.
std::string Note(const std::string& version, std::map<std::string, std::string>& newest) {
  std::string family = version.substr(0, version.rfind('_'));
  const bool numbered = version.find_first_of("0123456789", family.size()) != std::string::npos;
  if (numbered && ::strverscmp(version.c_str(), newest[family].c_str()) > 0) {
    newest[family] = version;
  }
  return family;
}

}  // namespace

void CheckNeeds(const ElfFilePtr& file, const ElfFilePtr& kernel, const std::string& root, Report& report) {
  Libraries libraries = {{"", file}};
  if (kernel != nullptr) {
    libraries["libIPLKernel.so"] = kernel;
  }
  AddNeeded(root, kernel, libraries, report);
  AddNeeded(root, file, libraries, report);
  std::set<std::string> unknown;
  for (const auto& [name, version] : file->versionNeeds) {
    const std::string family = Note(version, report.needs);
    const ElfFilePtr library = libraries[name];
    if (library == nullptr) {
      unknown.insert(version);
    } else if (library->versions.count(version) == 0) {
      std::map<std::string, std::string> newest;
      std::for_each(library->versions.begin(), library->versions.end(), [&](const auto& its) { Note(its, newest); });
      std::string text = version;
      text.append(" of ").append(name).append(", whose newest is '").append(newest[family]).append("'");
      report.Error("missing-version", text);
      unknown.insert(version);
    }
  }
  const bool complete = std::none_of(libraries.begin(), libraries.end(), [](const auto& it) { return !it.second; });
  for (const ElfSymbol& symbol : file->undefined) {
    const bool found = std::any_of(libraries.begin(), libraries.end(),
                                   [&](const auto& it) { return it.second && it.second->Defines(symbol); });
    // What a missing library or version would define is not said again.
    if (!found && complete && unknown.count(symbol.version) == 0) {
      report.Error("undefined-symbol", symbol.name + (symbol.version.empty() ? "" : "@" + symbol.version));
    }
  }
}
