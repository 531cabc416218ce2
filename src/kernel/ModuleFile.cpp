// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleFile.h"

#include <ipl/IPLKernel.h>

namespace {

// Returns the default file, "" if the executable's directory is unknown, null if memory is exhausted. The part behind
// the directory is decoded as one text, so that a name which ends in the middle of a character does not become another
// module's.
const char* MakeDefaultFile(IPLKernel& kernel, const char* name, PLString& file) {
  char tail[sizeof("/lib") + kMaximalModuleNameLength + sizeof(".so")];
  kernel.snprintf(tail, sizeof(tail), "/lib%s.so", name);
  const unsigned long tailLength = kernel.strlen(tail);
  file.AppendUTF8(tail, tailLength);
  if (!kernel.GetKernelBinDirectory(file)) {
    return file.GetLength() != 0 ? "" : nullptr;  // the text is left alone unless there was no memory for another
  }
  const unsigned long directoryLength = file.GetLength();
  file.AppendUTF8(tail, tailLength);
  const char* text = file.GetUTF8();
  return file.GetLength() != directoryLength && text[0] != '\0' ? text : nullptr;
}

}  // namespace

ModuleFile::ModuleFile(IPLKernel& kernel, const char* name, const char* path) : m_local{}, m_file(path) {
  if (path == nullptr) {
    m_file = MakeDefaultFile(kernel, name, m_default);
  } else if (kernel.strchr(path, '/') == nullptr) {
    m_local[0] = '.';
    m_local[1] = '/';
    kernel.strncpyTerm(m_local + 2, path, sizeof(m_local) - 2);
    m_file = m_local;
  }
}
