// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleFile.h"

#include <ipl/IPLKernel.h>

namespace {

// The part of the default file behind the executable's directory is decoded as one text, so that a name which ends in
// the middle of a character does not become another module's.
void AppendDefaultName(IPLKernel& kernel, const char* name, PLString& file) {
  char tail[sizeof("/lib") + kMaximalModuleNameLength + sizeof(".so")];
  kernel.snprintf(tail, sizeof(tail), "/lib%s.so", name);
  file.AppendUTF8(tail, kernel.strlen(tail));
}

}  // namespace

ModuleFile::ModuleFile(IPLKernel& kernel, const char* name, const char* path) : m_local{}, m_file(path) {
  if (path == nullptr) {
    if (kernel.GetKernelBinDirectory(m_default)) {
      AppendDefaultName(kernel, name, m_default);
    }
    m_file = m_default.GetUTF8();
  } else if (kernel.strchr(path, '/') == nullptr) {
    m_local[0] = '.';
    m_local[1] = '/';
    kernel.strncpyTerm(m_local + 2, path, sizeof(m_local) - 2);
    m_file = m_local;
  }
}
