// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleKey.h"

#include <ipl/IPLKernel.h>

#include "foundation/ContractLayout.h"

template <>
struct PLContractLayout<IPLKernelModuleKey> {
  IPL_ASSERT_OFFSET(IPLKernelModuleKey, name, 0);
  IPL_ASSERT_OFFSET(IPLKernelModuleKey, path, 4);
  IPL_ASSERT_SIZE(IPLKernelModuleKey, 8);
};

namespace {

uint32_t ContinueHash(uint32_t hash, const char* text) {
  for (; *text != '\0'; ++text) {
    hash = static_cast<unsigned char>(*text) + 65599U * hash;
  }
  return hash;
}

}  // namespace

uint32_t PLHashTable_KeyHash(const IPLKernelModuleKey& key) {
  const uint32_t hash = ContinueHash(0, key.name);
  return key.path != nullptr ? ContinueHash(hash, key.path) : hash;
}

bool PLHashTable_KeyCompare(const IPLKernelModuleKey& left, const IPLKernelModuleKey& right) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  if (kernel->strcmp(left.name, right.name) != 0) {
    return false;
  }
  if (left.path == nullptr || right.path == nullptr) {
    return left.path == right.path;
  }
  return kernel->strcmp(left.path, right.path) == 0;
}
