// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIMEREVENT_H
#define IPL_TIMEREVENT_H

#include <ipl/IPLKernel.h>

/// @file
/// What a timer message says.

namespace ipl {

/// What the message of a timer says, as a value of its own; empty, with zeros, for any other message. [owner] Takes no
/// lock.
struct TimerEvent {
  unsigned long timerID;           ///< what SetTimer or SetTimerGMT returned; 0: this is empty
  IPLKernel::Time fireTimeKernel;  ///< the kernel's time when the timer fired
  IPLKernel::Time fireTimeGMT;     ///< the same instant in GMT

  /// Returns whether a timer fired.
  IPL_ALWAYS_INLINE explicit operator bool() const noexcept { return timerID != 0; }
};

/// Takes what a message of a timer carries: copies it and gives the TimerMessageData back. To be called once for a
/// message, with its identifier and data; of any other message it touches nothing. The message itself stays the
/// caller's. Returns an empty event if this is no message of a timer, and always while the kernel can have no timers.
/// [any thread but the timer thread] [blocks] It takes the state mutex where the first timer operation does.
IPL_ALWAYS_INLINE TimerEvent TakeTimerEvent(IPLKernel* kernel, unsigned long messageID, void* data) {
  TimerEvent event = {0, IPLKernel::Time(), IPLKernel::Time()};
  // Without timers the kernel gives 0, which may be the identifier of a message that has nothing to do with them.
  if (messageID != 0 && data != nullptr && messageID == kernel->GetTimerMessageID()) {
    IPLKernel::TimerMessageData* const fired = static_cast<IPLKernel::TimerMessageData*>(data);
    event.timerID = fired->GetTimerID();
    event.fireTimeKernel = fired->GetFireTimeKernel();
    event.fireTimeGMT = fired->GetFireTimeGMT();
    fired->ReleaseTimerData();
  }
  return event;
}

/// The same of a message, which the caller still releases. message: not null.
IPL_ALWAYS_INLINE TimerEvent TakeTimerEvent(IPLKernel* kernel, IPLKernel::Message& message) {
  return TakeTimerEvent(kernel, message.GetID(), message.GetData());
}

}  // namespace ipl

#endif  // IPL_TIMEREVENT_H
