// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_IPLMOD_ELFFILE_H
#define IPL_TOOLS_IPLMOD_ELFFILE_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gelf.h>

struct ElfSymbol {
  std::string name;
  std::string version;  // empty if it has none
  int binding = 0;
  uint64_t value = 0;
};

/// What a shared library says about itself to the dynamic loader.
struct ElfFile {
  /// Throws std::system_error if the file cannot be read, std::invalid_argument if the dynamic loader would not open
  /// it.
  explicit ElfFile(const std::string& file);
  /// Whether a reference finds its definition here.
  bool Defines(const ElfSymbol& symbol) const;
  /// Whether a stack trace gets from the function at this address to its caller.
  bool HasUnwindEntry(uint64_t address) const;

  std::string path;
  std::string kind;       // class and machine: the dynamic loader takes one kind
  uint64_t floatAbi = 0;  // the flag of a file for ARM
  bool textRelocations = false;
  std::map<int64_t, std::vector<std::string>> texts;  // dynamic entries; each tag that has texts is there
  std::vector<ElfSymbol> defined;
  std::vector<ElfSymbol> undefined;
  std::vector<std::pair<std::string, std::string>> versionNeeds;  // a library, and a version it has to define
  std::set<std::string> versions;                                 // those defined here

  std::shared_ptr<Elf> elf;
  std::map<uint32_t, std::pair<Elf_Data*, GElf_Shdr>> sections;  // by type
  std::map<int, std::string> versionNames;                       // by their index in the file
  std::set<std::pair<std::string, std::string>> definitions;     // name and version
};
using ElfFilePtr = std::shared_ptr<const ElfFile>;

/// Returns the library with this name in a root file system, null if there is none. by: it is of the same kind, and
/// this file says in which folders to look first; null: any.
ElfFilePtr FindLibrary(const std::string& root, const std::string& name, const ElfFile* by);

#endif  // IPL_TOOLS_IPLMOD_ELFFILE_H
