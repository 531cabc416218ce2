// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_TEXTREADER_READMETER_H
#define IPL_EXAMPLES_TEXTREADER_READMETER_H

#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/PLThreadAnnotations.h>
#include <ipl/ScopedLock.h>

#include "pipeline/Pipeline.h"

namespace pipeline {

/// Counts what is read, for other threads to see. Each operation takes the meter's own mutex and none beside it.
class ReadMeter {
 public:
  ReadMeter(IPLKernel* kernel, unsigned long fileCount)
      : m_pKernel(kernel), m_mutex(kernel->CreateMutex()), m_start(kernel->GetKernelTime()), m_state() {
    m_state.fileCount = fileCount;
  }

  bool IsUsable() const { return static_cast<bool>(m_mutex); }

  void Add(uint64_t bytes, unsigned long files) {
    const ipl::ScopedLock guard(*m_mutex);
    m_state.bytes += bytes;
    m_state.filesDone += files;
    m_state.elapsed = Elapsed();
  }
  ReadProgress Get() {
    const ipl::ScopedLock guard(*m_mutex);
    ReadProgress progress = m_state;
    if (progress.filesDone < progress.fileCount) {
      progress.elapsed = Elapsed();
    }
    return progress;
  }

 private:
  IPLKernel::Time Elapsed() const { return m_pKernel->GetKernelTime().GetNanoseconds() - m_start.GetNanoseconds(); }

  IPLKernel* const m_pKernel;
  const ipl::MutexOwner m_mutex;
  const IPLKernel::Time m_start;
  ReadProgress m_state PL_GUARDED_BY(m_mutex);  // elapsed: at the last addition
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_TEXTREADER_READMETER_H
