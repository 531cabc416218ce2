// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_TEXTREADER_READMETER_H
#define IPL_EXAMPLES_TEXTREADER_READMETER_H

#include <ipl/IPLKernel.h>
#include <ipl/PLThreadAnnotations.h>

#include "pipeline/Ownership.h"
#include "pipeline/Pipeline.h"

namespace pipeline {

/// Counts what is read, for other threads to see. Each operation takes the meter's own mutex and none beside it.
class ReadMeter {
 public:
  ReadMeter(IPLKernel* kernel, unsigned long fileCount)
      : m_pKernel(kernel), m_pMutex(kernel->CreateMutex()), m_start(kernel->GetKernelTime()), m_state() {
    m_state.fileCount = fileCount;
  }
  ~ReadMeter() { m_pKernel->DestroyMutex(m_pMutex); }
  ReadMeter(const ReadMeter&) = delete;
  ReadMeter& operator=(const ReadMeter&) = delete;

  bool IsUsable() const { return m_pMutex != nullptr; }

  void Add(uint64_t bytes, unsigned long files) {
    const LockGuard guard(m_pMutex);
    m_state.bytes += bytes;
    m_state.filesDone += files;
    m_state.elapsed = Elapsed();
  }
  ReadProgress Get() {
    const LockGuard guard(m_pMutex);
    ReadProgress progress = m_state;
    if (progress.filesDone < progress.fileCount) {
      progress.elapsed = Elapsed();
    }
    return progress;
  }

 private:
  IPLKernel::Time Elapsed() const { return m_pKernel->GetKernelTime().GetNanoseconds() - m_start.GetNanoseconds(); }

  IPLKernel* const m_pKernel;
  IPLKernel::Mutex* const m_pMutex;  // owned
  const IPLKernel::Time m_start;
  ReadProgress m_state PL_GUARDED_BY(m_pMutex);  // elapsed: at the last addition
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_TEXTREADER_READMETER_H
