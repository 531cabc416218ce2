// SPDX-License-Identifier: Apache-2.0
#include "time/VelClientLibrary.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>

#include <atomic>

namespace {

/// Published with release order when the library is open; never taken back.
std::atomic<const VelClientOperations*> s_operations{nullptr};

// Opens a library by the loader's search, else in the folder of this library.
void* OpenLibrary(const char* name) {
  void* library = ::dlopen(name, RTLD_NOW);
  Dl_info self;
  if (library != nullptr || ::dladdr(reinterpret_cast<const void*>(&LoadVelClientOperations), &self) == 0) {
    return library;
  }
  const char* slash = ::strrchr(self.dli_fname, '/');
  char path[PATH_MAX];
  const int folderLength = slash != nullptr ? static_cast<int>(slash + 1 - self.dli_fname) : 0;
  const int length = ::snprintf(path, sizeof(path), "%.*s%s", folderLength, self.dli_fname, name);
  if (folderLength == 0 || length < 0 || static_cast<size_t>(length) >= sizeof(path)) {
    return nullptr;
  }
  return ::dlopen(path, RTLD_NOW);
}

}  // namespace

const VelClientOperations* GetVelClientOperations() { return s_operations.load(std::memory_order_acquire); }

const VelClientOperations* LoadVelClientOperations() {
  if (const VelClientOperations* operations = GetVelClientOperations()) {
    return operations;
  }
  // The platform's library first: the client's need of it is then met by the one that is open.
  void* platform = OpenLibrary("libVel.so");
  if (platform == nullptr) {
    return nullptr;
  }
  void* client = OpenLibrary("libIPLVelClient.so");
  void* entry = client != nullptr ? ::dlsym(client, IPL_VEL_CLIENT_ENTRY) : nullptr;
  if (entry == nullptr) {
    if (client != nullptr) {
      ::dlclose(client);
    }
    ::dlclose(platform);
    return nullptr;
  }
  // Two threads may come here at once: both get the same table, and the libraries stay open, once more than needed.
  const VelClientOperations* operations = reinterpret_cast<const VelClientOperations* (*)()>(entry)();
  s_operations.store(operations, std::memory_order_release);
  return operations;
}
