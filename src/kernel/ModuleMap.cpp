// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleMap.h"

#include <ipl/IPLKernel.h>

#include "foundation/ContractLayout.h"
#include "foundation/TrackedMemory.h"
#include "foundation/Utf.h"

template <>
struct PLContractLayout<MapModuleFile> {
  IPL_ASSERT_OFFSET(MapModuleFile, name, 0);
  IPL_ASSERT_OFFSET(MapModuleFile, path, 24);
  IPL_ASSERT_SIZE(MapModuleFile, 48);
};

namespace {

constexpr unsigned long kLongestSequence = 6;

// Returns whether bytes decode to no text at all: the first sequence is cut off, or a zero.
bool DecodesToNothing(const char* bytes, unsigned long count) {
  unsigned short units[kLongestSequence] = {};
  const unsigned long length = count < kLongestSequence ? count : kLongestSequence;
  DecodeUtf8(reinterpret_cast<const unsigned char*>(bytes), length, units);
  return units[0] == 0;
}

// Also makes the UTF-8 form that look-ups read, so that they need no lock. False if memory is exhausted.
bool SetText(PLString& text, const char* bytes, unsigned long count) {
  text.AppendUTF8(bytes, count);
  return text.GetUTF8()[0] != '\0' || DecodesToNothing(bytes, count);
}

TrackedPtr<MapModuleFile> MakeEntry(const ModuleMapValue& value) {
  TrackedPtr<MapModuleFile> entry = MakeTracked<MapModuleFile>();
  if (entry == nullptr || !SetText(entry->name, value.name, value.nameLength) ||
      !SetText(entry->path, value.path, value.pathLength)) {
    return nullptr;
  }
  return entry;
}

}  // namespace

bool SplitModuleMapValue(const char* text, ModuleMapValue& value) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  const char* colon = kernel->strchr(text, ':');
  if (colon == nullptr || colon == text) {
    return false;
  }
  const char* path = colon;
  while (*path == ':') {
    ++path;
  }
  if (*path == '\0') {
    return false;
  }
  value.name = text;
  value.nameLength = static_cast<unsigned long>(colon - text);
  value.path = path;
  value.pathLength = kernel->strlen(path);
  return true;
}

void ReadModuleMap(int argc, const char** argv, PLArray<MapModuleFile*>& map) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  for (int i = 0; i + 1 < argc; ++i) {
    ModuleMapValue value;
    if (argv[i] == nullptr || argv[i + 1] == nullptr || kernel->strcmp(argv[i], "--modulemap") != 0 ||
        !SplitModuleMapValue(argv[i + 1], value)) {
      continue;
    }
    TrackedPtr<MapModuleFile> entry = MakeEntry(value);
    const unsigned long oldSize = map.GetSize();
    if (entry != nullptr) {
      map.Append(entry.get());
    }
    if (map.GetSize() != oldSize) {
      static_cast<void>(entry.release());  // the map owns it
    }
  }
}
