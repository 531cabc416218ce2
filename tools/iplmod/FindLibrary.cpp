// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <sstream>

#include "ElfFile.h"

namespace fs = std::filesystem;

ElfFilePtr FindLibrary(const std::string& root, const std::string& name, const ElfFile* by) {
  std::vector<std::string> folders;
  for (const int64_t tag : {DT_RPATH, DT_RUNPATH}) {
    for (const std::string& list : by != nullptr ? by->texts.at(tag) : folders) {
      std::istringstream parts(list);
      for (std::string part; std::getline(parts, part, ':');) {
        const std::string beside = fs::absolute(by->path).parent_path().string();
        folders.push_back(part.rfind("$ORIGIN", 0) == 0 ? beside + part.substr(7) : root + part);
      }
    }
  }
  for (const char* folder : {"/lib", "/usr/lib", "/usr/local/lib", "/lib64", "/usr/lib64"}) {
    folders.push_back(root + folder);
    std::error_code none;
    for (const fs::directory_entry& entry : fs::directory_iterator(root + folder, none)) {
      if (entry.path().filename().string().find("-linux-") != std::string::npos) {
        folders.push_back(entry.path().string());
      }
    }
  }
  const std::string file = "/" + name;
  for (const std::string& folder : name.find('/') == std::string::npos ? folders : std::vector{root}) {
    try {
      auto library = std::make_shared<const ElfFile>(folder + file);
      if (by == nullptr || library->kind == by->kind) {
        return library;
      }
    } catch (const std::exception&) {
      continue;  // the dynamic loader goes on as well
    }
  }
  return nullptr;
}
