// SPDX-License-Identifier: Apache-2.0
// Does one operation after the other, between marks that whoever counts instructions or system calls can see, and
// counts the rest itself. check_gates.py runs it.
#include <dlfcn.h>
#include <stdint.h>
#include <stdlib.h>

#include <string>

#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>
#include <ipl/PLMem.h>

#include "GateCases.h"

namespace {

IPLKernel* s_kernel;
volatile uintptr_t s_sink;

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

void MeasureThreads(Meter& meter) {
  IPLKernel::Thread* thread = s_kernel->CreateThread();
  meter.Measure("thread-run", [thread] {
    thread->Run(
        "gate", [](IPLKernel::Thread*, void*) {}, nullptr);
    thread->WaitUntilFinished(IPLKernel::Time::Forever());
  });
  s_kernel->DestroyThread(thread);
}

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
  MeasureThreads(meter);
  MeasureTimers(meter);
  MeasureSend(meter);
  IPLModule_IPLKernel_UnloadModule(s_kernel);
  return 0;
}
