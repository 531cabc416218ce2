// SPDX-License-Identifier: Apache-2.0
// Slots 2 to 4 and 42: the module loader.
#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <ipl/PLString.h>

#include "kernel/IPLKernelImpl.h"
#include "kernel/ModuleFile.h"
#include "kernel/ModuleLibrary.h"
#include "kernel/ModuleMap.h"
#include "threads/DetachedCode.h"
#include "threads/KernelLockGuard.h"

// The walk takes no lock: the map does not change after start-up, and neither do the UTF-8 forms of its strings, which
// were made when it was read.
IPLModule* IPLKernelImpl::AcquireModule(const char* name) {
  if (name != nullptr && m_pModuleMap != nullptr) {
    for (unsigned long i = 0; i < m_pModuleMap->GetSize(); ++i) {
      MapModuleFile* entry = m_pModuleMap->GetAt(i);
      if (strcmp(entry->name.GetUTF8(), name) == 0) {
        return AcquireModule(name, entry->path.GetUTF8());
      }
    }
  }
  return AcquireModule(name, nullptr);
}

IPLModule* IPLKernelImpl::AcquireModule(const char* name, const char* path) {
  if (name == nullptr || name[0] == '\0') {
    return nullptr;
  }
  if (strcmp(name, "IPLKernel") == 0) {
    return this;
  }
  if (m_pModuleMutex == nullptr || m_pModulesByKey == nullptr || m_pModulesByObject == nullptr) {
    return nullptr;  // not started, shut down, or no memory at start-up
  }
  KernelLockGuard guard(m_pModuleMutex);
  ModuleRecord* record = FindByKey({name, path});
  if (record == nullptr) {
    return LoadModule(name, path);
  }
  if (record->m_refCount == 0) {
    return nullptr;  // one of its entries is running, on this thread
  }
  ++record->m_refCount;
  return record->m_pModule;
}

IPLModule* IPLKernelImpl::LoadModule(const char* name, const char* path) {
  if (strlen(name) > kMaximalModuleNameLength) {
    NoteModuleNotLoaded(name, "its name is longer than 47 bytes");
    return nullptr;
  }
  if (path != nullptr && strchr(path, '/') == nullptr && strlen(path) > kMaximalModuleNameLength) {
    NoteModuleNotLoaded(name, "its path has no '/' and is longer than 47 bytes");
    return nullptr;
  }
  DetachedCode::CloseLeft();  // so that a library which is still open for that reason alone is loaded afresh
  const ModuleFile file(*this, name, path);
  if (file.Get() == nullptr) {
    return nullptr;
  }
  ModuleLibrary library(name, file.Get());
  ModuleEntries entries;
  if (library.Get() == nullptr || !library.Resolve(entries)) {
    return nullptr;
  }
  TrackedPtr<ModuleRecord> record = ModuleRecord::Make(name, path, library.Get(), entries.unload);
  if (record == nullptr) {
    return nullptr;
  }
  // From here on ReleaseModule closes it, or nobody: what an entry throws may be of a class that lives in it.
  void* handle = library.Release();
  IPLModule* module = StartModule(entries, std::move(record));
  if (module == nullptr) {
    ::dlclose(handle);
  }
  return module;
}

// Takes a record's key out of its table again unless the module has come up; its load entry may also throw.
class IPLKernelImpl::KeyGuard {
 public:
  KeyGuard(IPLKernelImpl& kernel, ModuleRecord* record) : m_kernel(kernel), m_pRecord(record) {}
  ~KeyGuard() PL_NO_THREAD_SAFETY_ANALYSIS {  // within StartModule, which has the lock
    if (m_pRecord != nullptr) {
      m_kernel.RemoveKey(m_pRecord);
    }
  }
  KeyGuard(const KeyGuard&) = delete;
  KeyGuard& operator=(const KeyGuard&) = delete;

  void Dismiss() { m_pRecord = nullptr; }

 private:
  IPLKernelImpl& m_kernel;
  ModuleRecord* m_pRecord;
};

// Any entry may acquire and release modules, and so change both tables.
IPLModule* IPLKernelImpl::StartModule(const ModuleEntries& entries, TrackedPtr<ModuleRecord> record) {
  entries.putKernel(this);
  if (!AddKey(record.get())) {
    return nullptr;
  }
  KeyGuard key(*this, record.get());
  IPLModule* module = entries.load();
  if (module == nullptr) {
    return nullptr;
  }
  record->m_pModule = module;
  if (!AddObject(record.get())) {
    entries.unload(module);
    return nullptr;
  }
  key.Dismiss();
  record->m_refCount = 1;
  static_cast<void>(record.release());  // reached through the tables; ReleaseModule frees it
  return module;
}

void IPLKernelImpl::ReleaseModule(IPLModule* module) {
  if (module == nullptr || module == this || m_pModuleMutex == nullptr || m_pModulesByObject == nullptr) {
    return;
  }
  KernelLockGuard guard(m_pModuleMutex);
  ModuleRecord* record = FindByObject(module);
  if (record == nullptr || record->m_refCount == 0) {
    return;  // not acquired, or its unload entry is running, on this thread
  }
  --record->m_refCount;
  if (record->m_refCount > 0) {
    return;
  }
  // The record stays in both tables, with a count of 0, while code of the module runs.
  record->m_pfnUnload(module);
  ::dlclose(record->m_hLibrary);
  RemoveKey(record);
  RemoveObject(record);
  PLTypes_ScalarDelete(record, nullptr, 0);
  DetachedCode::CloseLeft();
}

ModuleRecord* IPLKernelImpl::FindByKey(const IPLKernelModuleKey& key) {
  ModuleRecord* record = nullptr;
  m_pModulesByKey->Lookup(key, record);
  return record;
}

ModuleRecord* IPLKernelImpl::FindByObject(IPLModule* module) {
  ModuleRecord* record = nullptr;
  m_pModulesByObject->Lookup(module, record);
  return record;
}

// A module that acquired itself from its first entry has a record by this key already. Its entry goes, since a key
// points into its record; that record is still found by its object.
bool IPLKernelImpl::AddKey(ModuleRecord* record) {
  m_pModulesByKey->RemoveAt(record->GetKey());
  m_pModulesByKey->SetAt(record->GetKey(), record);
  return FindByKey(record->GetKey()) == record;
}

void IPLKernelImpl::RemoveKey(ModuleRecord* record) {
  if (FindByKey(record->GetKey()) == record) {
    m_pModulesByKey->RemoveAt(record->GetKey());
  }
}

// Two keys may give one object. The table then holds the record that came last, which leads to the one before, so that
// each release ends one acquisition.
bool IPLKernelImpl::AddObject(ModuleRecord* record) {
  record->m_pHidden = FindByObject(record->m_pModule);
  m_pModulesByObject->SetAt(record->m_pModule, record);
  return FindByObject(record->m_pModule) == record;
}

void IPLKernelImpl::RemoveObject(ModuleRecord* record) {
  ModuleRecord* last = FindByObject(record->m_pModule);
  if (last != record) {
    while (last->m_pHidden != record) {
      last = last->m_pHidden;
    }
    last->m_pHidden = record->m_pHidden;
  } else if (record->m_pHidden != nullptr) {
    m_pModulesByObject->SetAt(record->m_pModule, record->m_pHidden);
  } else {
    m_pModulesByObject->RemoveAt(record->m_pModule);
  }
}

bool IPLKernelImpl::GetKernelBinDirectory(PLString& dir) {
  char link[64];
  const int linkLength = snprintf(link, sizeof(link), "/proc/%i/exe", static_cast<int>(GetProcessID()));
  if (linkLength < 0 || static_cast<unsigned int>(linkLength) >= sizeof(link)) {
    return false;
  }
  char path[PATH_MAX];
  static_assert(sizeof(path) == 4096, "the longest path that is read");
  const ssize_t size = ::readlink(link, path, sizeof(path));
  if (size < 0 || static_cast<size_t>(size) >= sizeof(path)) {
    return false;
  }
  path[size] = '\0';
  const char* slash = strrchr(path, '/');
  const unsigned long length = slash != nullptr ? static_cast<unsigned long>(slash - path) : 0;
  dir.Empty();
  dir.AppendUTF8(path, length);
  return length == 0 || dir.GetLength() != 0;  // without memory for it the directory is not the root
}
