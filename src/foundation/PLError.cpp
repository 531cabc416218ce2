// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLError.h>

#include "foundation/ContractLayout.h"

template <>
struct PLContractLayout<PLError> {
  IPL_ASSERT_OFFSET(PLError, m_name, 4);
  IPL_ASSERT_OFFSET(PLError, m_code, 36);
  IPL_ASSERT_SIZE(PLError, 40);
};

const PLError PLError_OK(0, "PLError_OK");
const PLError PLError_NoMemory(1, "PLError_NoMemory");
const PLError PLError_Timeout(2, "PLError_Timeout");
const PLError PLError_Generic(3, "PLError_Generic");
const PLError PLError_NotFound(4, "PLError_NotFound");
const PLError PLError_Usage(5, "PLError_Usage");
const PLError PLError_InvalidParameters(6, "PLError_InvalidParameters");

PLError::PLError() { Assign(-1, "Uninitialized"); }

PLError::PLError(int32_t code, const char* name) { Assign(code, name); }

PLError::PLError(const PLError& other) { Assign(other.m_code, other.m_name); }

PLError& PLError::operator=(const PLError& other) {
  if (this != &other) {
    Assign(other.m_code, other.m_name);
  }
  return *this;
}

PLError::~PLError() = default;

// The name is copied by hand: values are made before the kernel object, with its strncpyTerm, exists.
void PLError::Assign(int32_t code, const char* name) {
  unsigned int length = 0;
  if (name != nullptr) {
    while (length < sizeof(m_name) - 1 && name[length] != '\0') {
      m_name[length] = name[length];
      ++length;
    }
  }
  m_name[length] = '\0';
  m_code = code;
}
