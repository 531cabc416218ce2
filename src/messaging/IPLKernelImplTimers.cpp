// SPDX-License-Identifier: Apache-2.0
// Slots 29 to 32 and 75: timers. There is no timer manager yet: every operation answers as it does without one.
#include "kernel/IPLKernelImpl.h"

unsigned long IPLKernelImpl::GetTimerMessageID() { return 0; }

unsigned long IPLKernelImpl::SetTimer(const Time&, MessageQueue&, bool) { return 0; }

unsigned long IPLKernelImpl::SetTimerGMT(const Time&, MessageQueue&, const Time&) { return 0; }

void IPLKernelImpl::ClearTimer(unsigned long, MessageQueue&) {}

KernelTimerManager* IPLKernelImpl::GetTimerManager() { return m_pTimerManager.load(std::memory_order_acquire); }
