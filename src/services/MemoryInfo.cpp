// SPDX-License-Identifier: Apache-2.0
#include "services/MemoryInfo.h"

#include <stdio.h>
#include <stdlib.h>

#include <memory>

#include <ipl/IPLKernel.h>

namespace {

struct FileClose {
  void operator()(FILE* file) const { ::fclose(file); }
};

struct Field {
  char label[12];
  unsigned long labelLength;
  unsigned long long MemoryInfo::*value;
};

constexpr Field kFields[] = {{"MemTotal:", 9, &MemoryInfo::memTotal},
                             {"MemFree:", 8, &MemoryInfo::memFree},
                             {"SwapTotal:", 10, &MemoryInfo::swapTotal},
                             {"SwapFree:", 9, &MemoryInfo::swapFree}};

}  // namespace

MemoryInfo ReadMemoryInfo(IPLKernel& kernel, const char* path) {
  MemoryInfo info;
  const std::unique_ptr<FILE, FileClose> file(::fopen(path, "re"));
  if (file == nullptr) {
    return info;
  }
  char line[256];
  while (::fgets(line, sizeof(line), file.get()) != nullptr) {
    for (const Field& field : kFields) {
      if (kernel.strncmp(line, field.label, field.labelLength) == 0) {
        info.*field.value = ::strtoull(line + field.labelLength, nullptr, 10) * 1024;  // the file counts kibibytes
        break;
      }
    }
  }
  return info;
}
