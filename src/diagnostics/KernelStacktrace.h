// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_DIAGNOSTICS_KERNELSTACKTRACE_H
#define IPL_DIAGNOSTICS_KERNELSTACKTRACE_H

#include <memory>

#include <ipl/IPLKernel.h>

/// The return addresses of the thread that made it. It and its memory come from the ordinary heap.
class KernelStacktrace : public IPLKernel::Stacktrace {
 public:
  /// Drops the first skip + 3 addresses: its own, that of CreateKernelStacktrace and that of the kernel's operation,
  /// which therefore have to be real frames. maxDepth, at most 32, counts them too.
  KernelStacktrace(unsigned long maxDepth, unsigned long skip);
  ~KernelStacktrace() override;
  KernelStacktrace(const KernelStacktrace&) = delete;
  KernelStacktrace& operator=(const KernelStacktrace&) = delete;

  unsigned long GetDepth() const override;
  unsigned long GetAddress(unsigned long index) const override;
  const char* GetFrameString(unsigned long index) const override;

 private:
  template <typename>
  friend struct PLContractLayout;

  unsigned long m_depth = 0;
  unsigned long* m_pAddresses = nullptr;   // owned; null when there are none
  mutable char* m_pFrameString = nullptr;  // owned; null before the first GetFrameString
};

/// Null if memory is exhausted.
IPLKernel::Stacktrace* CreateKernelStacktrace(unsigned long maxDepth, unsigned long skip);
/// Ignores null.
void DestroyKernelStacktrace(IPLKernel::Stacktrace* stacktrace);

/// Keeps a function a frame of its own. Its file is compiled without sibling calls, so that its caller stays one too.
#define IPL_REAL_FRAME __attribute__((noinline))

#endif  // IPL_DIAGNOSTICS_KERNELSTACKTRACE_H
