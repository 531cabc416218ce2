// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_IPLKERNELIMPL_H
#define IPL_KERNEL_IPLKERNELIMPL_H

#include <stddef.h>
#include <stdint.h>

#include <atomic>

#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>
#include <ipl/PLHashTable.h>

#include "foundation/TrackedMemory.h"
#include "kernel/ModuleKey.h"
#include "kernel/ModuleRecord.h"

class KernelTimerManager;
struct MapModuleFile;
struct ModuleEntries;

/// The kernel object. Its operations are defined in the folders of their subsystems, in the files
/// IPLKernelImpl<Subject>.cpp; this header holds them in slot order. No call of an operation is qualified or bound at
/// compile time, and the class is not final: somebody may stand in front of its table.
class IPLKernelImpl : public IPLKernel {
 public:
  IPLKernelImpl();

  void InitializeKernel(int argc, const char** argv);
  void UninitializeKernel();

  /// The object lives in static storage: its deleting destructor, slot 1 of the table, has nothing to free.
  static void operator delete(void*) noexcept {}

  ~IPLKernelImpl() override;

  IPLModule* AcquireModule(const char* name) override;
  IPLModule* AcquireModule(const char* name, const char* path) override;
  void ReleaseModule(IPLModule* module) override;
  Thread* CreateThread() override;
  void DestroyThread(Thread* thread) override;
  Thread* GetCurrentThread() override;
  void Sleep(const Time& duration) override;
  PLError GetLastError() override;
  void SetLastError(const PLError& error) override;
  Mutex* CreateMutex() override;
  void DestroyMutex(Mutex* mutex) override;
  Event* CreateEvent(bool manualReset) override;
  void DestroyEvent(Event* event) override;
  Stacktrace* CreateStacktrace(unsigned long maxDepth, unsigned long skip) override;
  void DestroyStacktrace(Stacktrace* stacktrace) override;
  void* Alloc(unsigned long size, const char* file, int line) override;
  void* ReAlloc(void* block, unsigned long size, const char* file, int line) override;
  void Free(void* block, const char* file, int line) override;
  Time GetKernelTime() override;
  Time GetKernelTimeResolution() override;
  void SetTimeGMT(const Time& gmt) override;
  Time GetTimeGMT() override;
  void SetTimeLocal(const Time& local) override;
  Time GetTimeLocal() override;
  Time ConvertGMTToLocal(const Time& gmt) override;
  void TimeToCalendarTime(const Time& time, CalendarTime& cal) override;
  Time GetDayLightSavingTimeBias(const Time& time) override;
  unsigned long GetTimerMessageID() override;
  unsigned long SetTimer(const Time& delay, MessageQueue& queue, bool periodic) override;
  unsigned long SetTimerGMT(const Time& instant, MessageQueue& queue, const Time& period) override;
  void ClearTimer(unsigned long timerID, MessageQueue& queue) override;
  MessageQueue* CreateMessageQueue() override;
  void DestroyMessageQueue(MessageQueue* queue) override;
  unsigned long GetUniqueID() override;
  unsigned long GetProcessID() override;
  int GetArgc() override;
  const char** GetArgv() override;
  bool IsShutdownPending() override;
  bool GetRandomData(void* buffer, unsigned long size) override;
  void GetMemoryInfo(unsigned long long& memTotal, unsigned long long& memFree, unsigned long long& swapTotal,
                     unsigned long long& swapFree) override;
  bool GetKernelBinDirectory(PLString& dir) override;
  void* memset(void* destination, int value, unsigned long count) override;
  void* memcpy(void* destination, const void* source, unsigned long count) override;
  void* memmove(void* destination, const void* source, unsigned long count) override;
  int memcmp(const void* left, const void* right, unsigned long count) override;
  void qsort(void* base, unsigned long count, int size, void* compare) override;
  unsigned long wcslen(const unsigned short* text) override;
  unsigned long strlen(const char* text) override;
  int strcmp(const char* left, const char* right) override;
  int strncmp(const char* left, const char* right, unsigned long count) override;
  int strcasecmp(const char* left, const char* right) override;
  int strncasecmp(const char* left, const char* right, unsigned long count) override;
  char* strcpy(char* destination, const char* source) override;
  char* strcat(char* destination, const char* source) override;
  char* strstr(const char* text, const char* part) override;
  int sprintf(char* buffer, const char* format, ...) override IPL_PRINTF(3, 4);
  int snprintf(char* buffer, unsigned long size, const char* format, ...) override IPL_PRINTF(4, 5);
  long strtol(const char* text, char** end, int base) override;
  unsigned long strtoul(const char* text, char** end, int base) override;
  long long strtoq(const char* text, char** end, int base) override;
  double strtod(const char* text, char** end) override;
  char* strchr(const char* text, int character) override;
  char* strrchr(const char* text, int character) override;
  unsigned int PLStringToMultiByteCharacterString(const PLString& source, char* target, unsigned long targetSize,
                                                  const char* charSet, unsigned long& bytesWritten,
                                                  unsigned long& bytesConsumed, bool skipInvalid) override;
  unsigned int MultiByteCharacterStringToPLString(const char* source, unsigned long sourceLength, PLString& target,
                                                  const char* charSet, unsigned long& bytesConsumed,
                                                  bool skipInvalid) override;
  const char* GetSystemCharSet() override;
  void GetSystemLanguage(PLString& language) override;
  void strncpyTerm(char* destination, const char* source, unsigned long size) override;
  void AssertFailed(const char* file, int line, const char* expression) override;
  bool ReadConsoleInputString(char* buffer, unsigned long size, Time timeout) override;
  void WriteConsoleOutputString(const char* format, ...) override IPL_PRINTF(2, 3);
  void Kite_EnableLog(int category, int level, const char* format, ...) override IPL_PRINTF(4, 5);

  // Added behind the interface's own operations.
  virtual bool KITE_ChecklogLevel(int category, int level);  // slot 74
  virtual KernelTimerManager* GetTimerManager();             // slot 75

  /// The kernel object, null while there is none. Written by the entry symbols with release order, so that a thread
  /// that reads it with acquire order sees a constructed object; who got the kernel from somebody needs no order. Read
  /// without a lock everywhere.
  static IPL_HIDDEN std::atomic<IPLKernelImpl*> s_pKernelImpl;

 private:
  template <typename>
  friend struct PLContractLayout;

  void ReadGMTFromSystemClock(Time& gmt);
  void WriteGMTToSystemClock(const Time& gmt) PL_REQUIRES(m_pStateMutex);
  void NotifyGMTChange();
  static uint32_t RandomPureHasher(long value);

  // The module loader (IPLKernelImplModules.cpp).
  IPLModule* LoadModule(const char* name, const char* path) PL_REQUIRES(m_pModuleMutex);
  class KeyGuard;
  IPLModule* StartModule(const ModuleEntries& entries, TrackedPtr<ModuleRecord> record) PL_REQUIRES(m_pModuleMutex);
  ModuleRecord* FindByKey(const IPLKernelModuleKey& key) PL_REQUIRES(m_pModuleMutex);
  ModuleRecord* FindByObject(IPLModule* module) PL_REQUIRES(m_pModuleMutex);
  bool AddKey(ModuleRecord* record) PL_REQUIRES(m_pModuleMutex);
  bool AddObject(ModuleRecord* record) PL_REQUIRES(m_pModuleMutex);
  void RemoveKey(ModuleRecord* record) PL_REQUIRES(m_pModuleMutex);
  void RemoveObject(ModuleRecord* record) PL_REQUIRES(m_pModuleMutex);

  // The pointers below are set by InitializeKernel, before other threads use the kernel, and cleared by
  // UninitializeKernel, after they are done.
  IPLKernel::Mutex* m_pStateMutex;   // owned
  IPLKernel::Mutex* m_pModuleMutex;  // owned; see docs/locks.md
  PLHashTable<IPLKernelModuleKey, ModuleRecord*>* m_pModulesByKey PL_PT_GUARDED_BY(m_pModuleMutex);  // owned
  PLHashTable<IPLModule*, ModuleRecord*>* m_pModulesByObject PL_PT_GUARDED_BY(m_pModuleMutex);       // owned
  std::atomic<KernelTimerManager*> m_pTimerManager;  // owned; written under m_pStateMutex, read without it
  PLArray<MapModuleFile*>* m_pModuleMap;             // owned, and its entries; never changes once it was read
  int32_t m_argc;                                    // set by InitializeKernel only
  const char** m_argv;                               // not owned
  std::atomic<bool> m_shutdownPending;               // written by shut-down alone, read by any thread
  PLError m_lastError PL_GUARDED_BY(m_pStateMutex);
  IPLKernel::Time m_gmtOffset PL_GUARDED_BY(m_pStateMutex);
  uint32_t m_uniqueID PL_GUARDED_BY(m_pStateMutex);
  // Behind the fields of the contract:
  bool m_running;  // between InitializeKernel and UninitializeKernel; used by the host's thread alone
};

#endif  // IPL_KERNEL_IPLKERNELIMPL_H
