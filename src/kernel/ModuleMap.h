// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_MODULEMAP_H
#define IPL_KERNEL_MODULEMAP_H

#include <ipl/PLArray.h>
#include <ipl/PLString.h>

/// One entry of the module map: where the library of a named module lies.
struct MapModuleFile {
  PLString name;
  PLString path;
};

/// The two parts of an option value, pointing into it. The path reaches to the value's end.
struct ModuleMapValue {
  const char* name = nullptr;
  unsigned long nameLength = 0;
  const char* path = nullptr;
  unsigned long pathLength = 0;
};

/// Splits "name:path"; several ':' in a row count as one. Returns false if there is no ':' or if a part is empty.
bool SplitModuleMapValue(const char* text, ModuleMapValue& value);

/// Appends an entry to map for each "--modulemap" in the argument vector whose next argument is such a value. Others
/// are skipped, null arguments too.
void ReadModuleMap(int argc, const char** argv, PLArray<MapModuleFile*>& map);

#endif  // IPL_KERNEL_MODULEMAP_H
