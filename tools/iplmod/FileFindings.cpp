// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <sstream>

#include "Report.h"

void CheckFile(const ElfFile& file, const ElfFile& other, Report& report) {
  if (other.kind != file.kind) {
    return report.Error("wrong-machine", "it is for " + file.kind + ", " + other.path + " for " + other.kind);
  }
  if (other.floatAbi != file.floatAbi) {
    const bool hard = file.floatAbi == EF_ARM_ABI_FLOAT_HARD;
    report.Error("float-abi", std::string("it ") + (hard ? "passes" : "does not pass") +
                                  " numbers in floating-point registers, unlike " + other.path);
  }
  const auto isUnique = [](const ElfSymbol& symbol) { return symbol.binding == STB_GNU_UNIQUE; };
  const auto unique = std::find_if(file.defined.begin(), file.defined.end(), isUnique);
  if (const auto count = std::count_if(unique, file.defined.end(), isUnique); count > 0) {
    report.Warn("unique-symbol", std::to_string(count) + ", the first is " + unique->name +
                                     ": it will never be unloaded; compile with -fno-gnu-unique");
  }
  if (file.textRelocations) {
    report.Warn("text-relocation", "the dynamic loader writes to its code; compile with -fPIC");
  }
  for (const auto& [tag, texts] : file.texts) {
    const bool isList = tag == DT_RPATH || tag == DT_RUNPATH;
    for (const std::string& text : texts) {
      std::istringstream parts(text);
      for (std::string part; std::getline(parts, part, isList ? ':' : '\0');) {
        if (isList ? part.rfind("$ORIGIN", 0) != 0 : part.find('/') != std::string::npos) {
          report.Warn("baked-path", (isList ? "it looks for libraries in " : "it names a library by ") + part);
        }
      }
    }
  }
}
