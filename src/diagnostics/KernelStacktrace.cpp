// SPDX-License-Identifier: Apache-2.0
#include "diagnostics/KernelStacktrace.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <inttypes.h>
#include <stdlib.h>

#include <algorithm>
#include <new>

#include "foundation/ContractLayout.h"

template <>
struct PLContractLayout<KernelStacktrace> {
  IPL_ASSERT_OFFSET(KernelStacktrace, m_depth, 4);
  IPL_ASSERT_OFFSET(KernelStacktrace, m_pAddresses, 8);
  IPL_ASSERT_OFFSET(KernelStacktrace, m_pFrameString, 12);
  IPL_ASSERT_SIZE(KernelStacktrace, 16);
};

namespace {

constexpr unsigned long kMaximalDepth = 32;
constexpr unsigned long kOwnFrames = 3;
constexpr unsigned long kFrameStringSize = 128;

// The address of a function in Thumb code has its lowest bit set, which is no part of its place.
uintptr_t SymbolAddress(const void* symbol) {
  const auto address = reinterpret_cast<uintptr_t>(symbol);
#ifdef __arm__
  return address & ~1UL;
#else
  return address;
#endif
}

const char* NameOr(const char* name) { return name != nullptr ? name : "???"; }

}  // namespace

IPL_REAL_FRAME KernelStacktrace::KernelStacktrace(unsigned long maxDepth, unsigned long skip) {
  void* addresses[kMaximalDepth];
  const int found = ::backtrace(addresses, static_cast<int>(std::min(maxDepth, kMaximalDepth)));
  const auto count = static_cast<unsigned long>(std::max(found, 0));
  if (count <= kOwnFrames || count - kOwnFrames <= skip) {
    return;
  }
  const unsigned long dropped = skip + kOwnFrames;
  m_pAddresses = new (std::nothrow) unsigned long[count - dropped];
  if (m_pAddresses == nullptr) {
    return;
  }
  m_depth = count - dropped;
  for (unsigned long i = 0; i < m_depth; ++i) {
    m_pAddresses[i] = reinterpret_cast<uintptr_t>(addresses[dropped + i]);
  }
}

KernelStacktrace::~KernelStacktrace() {
  ::free(m_pFrameString);
  delete[] m_pAddresses;
}

unsigned long KernelStacktrace::GetDepth() const { return m_depth; }

unsigned long KernelStacktrace::GetAddress(unsigned long index) const {
  return index < m_depth ? m_pAddresses[index] : 0;
}

const char* KernelStacktrace::GetFrameString(unsigned long index) const {
  if (index >= m_depth) {
    return "";
  }
  if (m_pFrameString == nullptr) {
    m_pFrameString = static_cast<char*>(::malloc(kFrameStringSize));
    if (m_pFrameString == nullptr) {
      return "";
    }
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  const uintptr_t address = m_pAddresses[index];
  Dl_info info;
  if (::dladdr(reinterpret_cast<void*>(address), &info) == 0) {  // NOLINT(performance-no-int-to-ptr)
    kernel->snprintf(m_pFrameString, kFrameStringSize, "[0x%" PRIxPTR "]", address);
  } else {
    kernel->snprintf(m_pFrameString, kFrameStringSize, "%s(%s+0x%" PRIxPTR ") [0x%" PRIxPTR "]", NameOr(info.dli_fname),
                     NameOr(info.dli_sname), address - SymbolAddress(info.dli_saddr), address);
  }
  return m_pFrameString;
}

IPL_REAL_FRAME IPLKernel::Stacktrace* CreateKernelStacktrace(unsigned long maxDepth, unsigned long skip) {
  return new (std::nothrow) KernelStacktrace(maxDepth, skip);
}

void DestroyKernelStacktrace(IPLKernel::Stacktrace* stacktrace) { delete stacktrace; }
