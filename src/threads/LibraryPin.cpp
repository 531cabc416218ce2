// SPDX-License-Identifier: Apache-2.0
#include "threads/LibraryPin.h"

#include <dlfcn.h>
#include <link.h>

LibraryPin::LibraryPin(const void* address) {
  Dl_info information;
  void* map = nullptr;
  if (::dladdr1(address, &information, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr) {
    return;
  }
  const char* name = static_cast<link_map*>(map)->l_name;
  if (name != nullptr && name[0] != '\0') {  // the program itself has no name and is never closed
    m_hLibrary = ::dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
  }
}

LibraryPin::~LibraryPin() {
  if (m_hLibrary != nullptr) {
    ::dlclose(m_hLibrary);
  }
}
