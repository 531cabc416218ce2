// SPDX-License-Identifier: Apache-2.0
// What GDB is tried on: known objects, a module, threads and timers. It is looked at where main enters Receive.
#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>
#include <ipl/PLHashTable.h>
#include <ipl/PLString.h>

struct Known {
  PLString text;
  PLArray<int> numbers;
  PLHashTable<const char*, int> table;
  PLError error = PLError_Timeout;
  IPLKernel::Time times[2] = {-1500000000, IPLKernel::Time::Forever()};
  IPLKernel::MessageQueue& queue = *IPLKernel::GetKernel()->CreateMessageQueue();
  IPLKernel::Thread& worker = *IPLKernel::GetKernel()->CreateThread();
  IPLKernel::MessageQueue* other = IPLKernel::GetKernel()->CreateMessageQueue();
} * g_known;

static void Send(IPLKernel::Thread*, void*) { g_known->queue.Send(9, nullptr); }

extern "C" __attribute__((noinline)) void Stop() { asm volatile(""); }

int main(int argc, const char** argv) {
  auto* kernel = static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule());
  IPLModule_IPLKernel_InitializeKernel(argc, argv);
  g_known = new Known;
  g_known->text.AppendUTF8("Gr\u00FC\u00DFe \"\U0001D11E\"\n", 15);
  const unsigned short alone[] = {0xD800, 'b', 0xDC00, 0};
  g_known->text.Append(alone);
  g_known->numbers.Append(11);
  g_known->table.SetAt("one", 1);
  kernel->AcquireModule("Lingerer");
  g_known->queue.Post(7, reinterpret_cast<void*>(0x123));
  kernel->SetTimer(IPLKernel::Time::Milliseconds(1000000000), g_known->queue, true);
  kernel->SetTimerGMT(IPLKernel::Time::Milliseconds(4102444800500), g_known->queue, 0);
  g_known->worker.Run("Worker", Send, nullptr);
  g_known->worker.Detach(nullptr);
  for (unsigned long length = 0; length != 2; g_known->queue.Unlock()) {
    g_known->queue.Lock();
    length = g_known->queue.GetLength();
  }
  Stop();
  g_known->other->Receive(0);
}
