// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_MODULEFILE_H
#define IPL_KERNEL_MODULEFILE_H

#include <ipl/PLString.h>

class IPLKernel;

/// The longest module name, and the longest path without a '/', in bytes.
constexpr unsigned long kMaximalModuleNameLength = 47;

/// The file of a module's library, chosen from its name and the path that was asked for.
class ModuleFile {
 public:
  /// path: null for the default file in the executable's directory. name is not longer than
  /// kMaximalModuleNameLength, nor is a path without a '/'.
  ModuleFile(IPLKernel& kernel, const char* name, const char* path);
  ModuleFile(const ModuleFile&) = delete;
  ModuleFile& operator=(const ModuleFile&) = delete;

  /// Valid as long as this object and the path that it was made from. Empty if the executable's directory is unknown;
  /// null if memory is exhausted.
  const char* Get() const { return m_file; }

 private:
  PLString m_default;
  char m_local[2 + kMaximalModuleNameLength + 1];  // "./" and a path
  const char* m_file;
};

#endif  // IPL_KERNEL_MODULEFILE_H
