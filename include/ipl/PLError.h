// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLERROR_H
#define IPL_PLERROR_H

#include <stdint.h>

#include <ipl/PLExport.h>

/// An error value: a code and a short name. Two values are equal when their codes are equal.
///
/// Operations of IPLKernel that fail store one as the calling thread's last error; read it with
/// IPLKernel::GetLastError(). Compare it with the constants below, or with the thread errors that every IPLKernel
/// object carries (IPLKernel::m_ThreadAlreadyRunning and so on).
///
/// Values are independent of each other; one value is not to be written by one thread while another uses it.
/// Needs no kernel object, takes no lock and allocates nothing.
class IPL_API PLError {
 public:
  /// Code -1, name "Uninitialized".
  PLError();
  /// name: copied, at most its first 31 characters; null counts as empty.
  PLError(int32_t code, const char* name);
  PLError(const PLError& other);
  PLError& operator=(const PLError& other);
  virtual ~PLError();  // slots 0, 1

  int32_t GetCode() const { return m_code; }
  /// Zero-terminated; valid as long as this value lives and is not assigned to.
  const char* GetName() const { return m_name; }

 private:
  template <typename>
  friend struct PLContractLayout;

  IPL_HIDDEN void Assign(int32_t code, const char* name);

  char m_name[32];
  int32_t m_code;
};

inline bool operator==(const PLError& left, const PLError& right) { return left.GetCode() == right.GetCode(); }
inline bool operator!=(const PLError& left, const PLError& right) { return !(left == right); }

// The standard errors, codes 0 to 6. The kernel itself stores only PLError_Timeout; success stores nothing.
extern IPL_API const PLError PLError_OK;
extern IPL_API const PLError PLError_NoMemory;
extern IPL_API const PLError PLError_Timeout;
extern IPL_API const PLError PLError_Generic;
extern IPL_API const PLError PLError_NotFound;
extern IPL_API const PLError PLError_Usage;
extern IPL_API const PLError PLError_InvalidParameters;

#endif  // IPL_PLERROR_H
