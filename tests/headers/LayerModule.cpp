// SPDX-License-Identifier: Apache-2.0
// A module's work with the optional layer, all of it, and, with PLAIN, the same work without it. In the oldest C++.
#ifndef PLAIN
#include <ipl/ArrayRange.h>
#include <ipl/KernelTime.h>
#include <ipl/MessageOwner.h>
#include <ipl/ScopedLock.h>
#include <ipl/ThreadStart.h>
#include <ipl/TimerEvent.h>
#include <ipl/TimerOwner.h>
#include <ipl/Utf8Text.h>
#endif
#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>
#include <ipl/PLMem.h>
#include <ipl/PLString.h>

#ifdef PLAIN
extern "C" IPL_API unsigned long PlainWork(IPLKernel* kernel) {
  IPLKernel::Mutex* mutex = kernel->CreateMutex();
  IPLKernel::Event* event = kernel->CreateEvent(true);
  IPLKernel::MessageQueue* queue = kernel->CreateMessageQueue();
  IPLKernel::Stacktrace* trace = kernel->CreateStacktrace(4, 0);
  void* block = kernel->Alloc(16, nullptr, 0);
  int* number = new (nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr)) int{7};
  PLArray<int> numbers;
  unsigned long sum = 0;
  {
    PLString text;
    text.AppendUTF8("\xC3\xA4", 2);
    char* bytes = text.CopyUTF16to8(text.GetBuffer());
    numbers.Append(static_cast<unsigned char>(bytes[1]));
    operator delete(bytes, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  }
  numbers.Append(*number);
  IPLKernel::Thread* thread = kernel->CreateThread();
  auto set = [](IPLKernel::Thread*, void* data) { static_cast<IPLKernel::Event*>(data)->Set(); };
  void* task = new (nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr)) void*(event);
  thread->Run("set", set, event);
  thread->WaitUntilFinished(IPLKernel::Time::Forever());
  kernel->DestroyThread(thread);
  operator delete(task, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
  mutex->Lock();
  const unsigned long timer = kernel->SetTimer(1000000, *queue, false);
  IPLKernel::Message* message = queue->Receive(IPLKernel::Time::Forever());
  if (message->GetID() == kernel->GetTimerMessageID()) {
    IPLKernel::TimerMessageData* data = static_cast<IPLKernel::TimerMessageData*>(message->GetData());
    sum += data->GetTimerID() == timer ? 1000 : 0;
    data->ReleaseTimerData();
  }
  queue->ReleaseMessage(message);
  kernel->ClearTimer(timer, *queue);
  mutex->Unlock();
  IPLModule* self = kernel->AcquireModule("IPLKernel");
  sum += event->Wait(0) && self == kernel && trace != nullptr ? 100000 : 0;
  for (unsigned long i = 0; i < numbers.GetSize(); ++i) {
    sum += static_cast<unsigned long>(numbers[i]);
  }
  kernel->ReleaseModule(self);
  operator delete(number, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
  kernel->Free(block, nullptr, 0);
  kernel->DestroyStacktrace(trace);
  kernel->DestroyMessageQueue(queue);
  kernel->DestroyEvent(event);
  kernel->DestroyMutex(mutex);
  return sum;
}
#else
extern "C" IPL_API unsigned long LayerWork(IPLKernel* kernel) {
  ipl::MutexOwner mutex(kernel->CreateMutex());
  ipl::EventOwner event(kernel->CreateEvent(true));
  ipl::QueueOwner queue(kernel->CreateMessageQueue());
  const ipl::StacktraceOwner trace(kernel->CreateStacktrace(4, 0));
  const ipl::MemoryOwner block(kernel->Alloc(16, nullptr, 0));
  const ipl::TrackedOwner<int> number = ipl::MakeTracked<int>(7);
  PLArray<int> numbers;
  unsigned long sum = 0;
  {
    PLString text;
    std::string utf8;
    if (ipl::AppendUtf8(text, "\xC3\xA4") == ipl::TextStatus::kConverted) {
      ipl::ToUtf8(text, utf8);
    }
    numbers.Append(static_cast<unsigned char>(utf8[1]));
  }
  numbers.Append(*number);
  IPLKernel::Event* const done = event.get();
  ipl::StartThread(kernel, "set", [done] { done->Set(); }).Join();
  {
    const ipl::ScopedLock guard(*mutex);
    ipl::TimerOwner timer(kernel->SetTimer(ipl::ToTimeout(std::chrono::milliseconds(1)), *queue, false), *queue);
    const ipl::MessageOwner message = ipl::Receive(*queue);
    const ipl::TimerEvent fired = ipl::TakeTimerEvent(kernel, *message.get());
    sum += fired.timerID == timer.get() ? 1000 : 0;
  }
  const ipl::ModuleOwner<IPLKernel> self = ipl::AcquireModule<IPLKernel>(kernel, "IPLKernel");
  const bool isSet = event->Wait(ipl::ToTimeout(std::chrono::seconds(-1)));
  sum += isSet && self.get() == kernel && trace ? 100000 : 0;
  for (const int each : numbers) {
    sum += static_cast<unsigned long>(each);
  }
  return sum;
}
#endif
