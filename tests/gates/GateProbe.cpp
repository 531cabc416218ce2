// SPDX-License-Identifier: Apache-2.0
// Does one operation after the other, between marks that whoever counts instructions or system calls can see, and
// counts the allocations itself. check_gates.py runs it.
#include <dlfcn.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>
#include <ipl/PLMem.h>
#include <ipl/PLString.h>

#ifdef IPL_GATES_CALLGRIND
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

#include "GateMemory.h"

namespace {

IPLKernel* s_kernel;
volatile uintptr_t s_sink;

/// The rounds of each operation, and the mark: closing a descriptor that cannot exist. The operations are numbered in
/// their order; -1000 - 2 * number begins one, the next lower number ends it.
class Meter {
 public:
  Meter(const char* wanted, unsigned rounds) : m_wanted(wanted), m_rounds(rounds) {}

  template <typename Operation>
  void Measure(const char* name, Operation operation) {
    if (*m_wanted != '\0' && strcmp(m_wanted, name) != 0) {
      return;
    }
    for (unsigned i = 0; i < m_rounds; ++i) {
      operation();  // pools, caches and lazily bound calls
    }
    const long before = GateMemory::Count();
    CALLGRIND_ZERO_STATS;
    close(-1000 - 2 * m_number);
    for (unsigned i = 0; i < m_rounds; ++i) {
      operation();
    }
    close(-1001 - 2 * m_number);
    CALLGRIND_DUMP_STATS_AT(name);
    printf("%d %s %ld\n", m_number, name, GateMemory::Count() - before);
    ++m_number;
  }

 private:
  const char* m_wanted;
  unsigned m_rounds;
  int m_number = 0;
};

void MeasureQueues(Meter& meter) {
  for (const int pending : {0, 16, 1000, 2000}) {
#ifdef __arm__
    if (pending > 16) {
      break;  // an emulator takes long for them
    }
#endif
    IPLKernel::MessageQueue* queue = s_kernel->CreateMessageQueue();
    for (int i = 0; i < pending; ++i) {
      queue->Post(1, nullptr);
    }
    const std::string name = "post-receive-" + std::to_string(pending);
    meter.Measure(name.c_str(), [queue] {
      queue->Post(1, nullptr);
      queue->ReleaseMessage(queue->Receive(IPLKernel::Time::Forever()));
    });
    while (IPLKernel::Message* message = queue->Receive(0)) {
      queue->ReleaseMessage(message);
    }
    s_kernel->DestroyMessageQueue(queue);
  }
}

void MeasureLocks(Meter& meter) {
  IPLKernel::Mutex* mutex = s_kernel->CreateMutex();
  IPLKernel::Event* event = s_kernel->CreateEvent(false);
  meter.Measure("lock-unlock", [mutex] {
    mutex->Lock();
    mutex->Unlock();
  });
  meter.Measure("set-wait", [event] {
    event->Set();
    event->Wait(IPLKernel::Time::Forever());
  });
  s_kernel->DestroyEvent(event);
  s_kernel->DestroyMutex(mutex);
}

void MeasureTexts(Meter& meter) {
  // Texts of two lengths: the difference is what the bytes alone cost.
  for (const unsigned long length : {1024UL, 3072UL}) {
    const std::string bytes(length, 'a');
    const std::string suffix = "-" + std::to_string(length);
    PLString text;
    text.AppendUTF8(bytes.data(), length);
    meter.Measure(("utf8-decode" + suffix).c_str(), [&] {
      text.Empty();
      text.AppendUTF8(bytes.data(), length);
    });
    meter.Measure(("length" + suffix).c_str(), [&] { s_sink = s_kernel->wcslen(text.GetBuffer()); });
    meter.Measure(("utf8-append" + suffix).c_str(), [&] {
      PLString other;
      other.AppendUTF8("x", 1);
      other.AppendUTF8(bytes.data(), length);
    });
    meter.Measure(("utf8-encode" + suffix).c_str(), [&] {
      char* encoded = text.CopyUTF16to8(text.GetBuffer());
      operator delete(encoded, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
    });
  }
  const std::string bytes(1024, 'a');
  PLString text;
  meter.Measure("charset-1024", [&] {
    unsigned long consumed = 0;
    s_kernel->MultiByteCharacterStringToPLString(bytes.data(), bytes.size(), text, "UTF-8", consumed, false);
  });
}

void MeasureMemoryAndClocks(Meter& meter) {
  meter.Measure("malloc-free", [] {
    void* volatile block = malloc(40);
    free(block);
  });
  meter.Measure("alloc-free", [] {
    void* volatile block = s_kernel->Alloc(40, nullptr, 0);
    s_kernel->Free(block, nullptr, 0);
  });
  meter.Measure("new-delete", [] {
    void* volatile object = operator new(40, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
    operator delete(object, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
  });
  meter.Measure("unique-id", [] { s_sink = s_kernel->GetUniqueID(); });
  meter.Measure("kernel-time", [] { s_sink = static_cast<uintptr_t>(s_kernel->GetKernelTime().GetNanoseconds()); });
  meter.Measure("log-check", [] { s_kernel->Kite_EnableLog(99, 5, "never"); });
}

void MeasureModules(Meter& meter, const char* module) {
  IPLModule* held = s_kernel->AcquireModule("GateModule", module);
  meter.Measure("module-loaded", [module] { s_kernel->ReleaseModule(s_kernel->AcquireModule("GateModule", module)); });
  s_kernel->ReleaseModule(held);
  meter.Measure("module-fresh", [module] { s_kernel->ReleaseModule(s_kernel->AcquireModule("GateModule", module)); });
  meter.Measure("dlopen-fresh", [module] {
    void* library = dlopen(module, RTLD_NOW);
    for (const char* symbol :
         {"IPLModule_PLModule_PutKernel", "IPLModule_GateModule_ModuleLoad", "IPLModule_GateModule_ModuleUnload"}) {
      s_sink = reinterpret_cast<uintptr_t>(dlsym(library, symbol));
    }
    dlclose(library);
  });
}

void MeasureThreadsAndTimers(Meter& meter) {
  IPLKernel::Thread* thread = s_kernel->CreateThread();
  meter.Measure("thread-run", [thread] {
    thread->Run(
        "gate", [](IPLKernel::Thread*, void*) {}, nullptr);
    thread->WaitUntilFinished(IPLKernel::Time::Forever());
  });
  s_kernel->DestroyThread(thread);
  IPLKernel::MessageQueue* queue = s_kernel->CreateMessageQueue();
  const IPLKernel::Time hour(3600LL * 1000000000);
  meter.Measure("timer-set-clear",
                [queue, hour] { s_kernel->ClearTimer(s_kernel->SetTimer(hour, *queue, false), *queue); });
  s_kernel->DestroyMessageQueue(queue);
}

struct Partner {
  IPLKernel::MessageQueue* queue;
  IPLKernel::Thread* thread;
};

void Answer(IPLKernel::Thread*, void* data) {
  auto* queue = static_cast<IPLKernel::MessageQueue*>(data);
  for (bool ends = false; !ends;) {
    IPLKernel::Message* message = queue->Receive(IPLKernel::Time::Forever());
    ends = message->GetID() == 0;
    queue->ReleaseMessage(message);
  }
}

void MeasureSend(Meter& meter) {
  IPLKernel::MessageQueue* queue = s_kernel->CreateMessageQueue();
  IPLKernel::Thread* thread = s_kernel->CreateThread();
  thread->Run("answer", Answer, queue);
  meter.Measure("send-reply", [queue] { queue->Send(1, nullptr); });
  queue->Send(0, nullptr);
  thread->WaitUntilFinished(IPLKernel::Time::Forever());
  s_kernel->DestroyThread(thread);
  s_kernel->DestroyMessageQueue(queue);
}

}  // namespace

// GateProbe ROUNDS MODULE [OPERATION]
int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  Meter meter(argc > 3 ? argv[3] : "", static_cast<unsigned>(atoi(argv[1])));
  s_kernel = static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule());
  const char* arguments[] = {"gates", nullptr};
  IPLModule_IPLKernel_InitializeKernel(1, arguments);
  // A second thread lives throughout, as in every program that uses a kernel.
  static_cast<void>(s_kernel->GetTimerMessageID());
  meter.Measure("nothing", [] {});
  MeasureQueues(meter);
  MeasureLocks(meter);
  MeasureTexts(meter);
  MeasureMemoryAndClocks(meter);
  MeasureModules(meter, argv[2]);
  MeasureThreadsAndTimers(meter);
  MeasureSend(meter);
  IPLModule_IPLKernel_UnloadModule(s_kernel);
  return 0;
}
