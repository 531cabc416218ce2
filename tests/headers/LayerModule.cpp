// SPDX-License-Identifier: Apache-2.0
// A module's work with the optional layer, all of it. In the oldest C++.
#include <ipl/ArrayRange.h>
#include <ipl/KernelTime.h>
#include <ipl/MessageOwner.h>
#include <ipl/ScopedLock.h>
#include <ipl/ThreadStart.h>
#include <ipl/TimerEvent.h>
#include <ipl/TimerOwner.h>
#include <ipl/Utf8Text.h>

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
