// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLERROR_H
#define IPL_PLERROR_H

#include <stdint.h>

#include <ipl/PLExport.h>

/// @file
/// Error values.

/// An error value: a code and a short name. Two values are equal when their codes are equal.
///
/// Operations of IPLKernel that fail store one as the calling thread's last error; read it with
/// IPLKernel::GetLastError(). Compare it with the constants below, or with the thread errors that every IPLKernel
/// object carries (IPLKernel::m_ThreadAlreadyRunning and so on).
///
/// Values are independent of each other; one value is not to be written by one thread while another uses it. [owner]
/// Needs no kernel object, takes no lock and allocates nothing.
class IPL_API PLError {
 public:
  /// Code -1, name "Uninitialized".
  PLError();
  /// name: copied, at most its first 31 characters; null counts as empty.
  PLError(int32_t code, const char* name);
  /// A copy.
  PLError(const PLError& other);
  /// Becomes a copy.
  PLError& operator=(const PLError& other);
  virtual ~PLError();  // slots 0, 1

  /// Returns the code.
  int32_t GetCode() const { return m_code; }
  /// Returns the name, zero-terminated; valid as long as this value lives and is not assigned to.
  const char* GetName() const { return m_name; }

 private:
  template <typename>
  friend struct PLContractLayout;

  IPL_HIDDEN void Assign(int32_t code, const char* name);

  char m_name[32];
  int32_t m_code;
};

/// Whether the codes are equal. [any thread] Takes no lock.
inline bool operator==(const PLError& left, const PLError& right) { return left.GetCode() == right.GetCode(); }
/// Whether the codes differ. [any thread] Takes no lock.
inline bool operator!=(const PLError& left, const PLError& right) { return !(left == right); }

/// @name The standard errors
/// The kernel itself stores only PLError_Timeout; success stores nothing.
/// @{

extern IPL_API const PLError PLError_OK;                 ///< code 0
extern IPL_API const PLError PLError_NoMemory;           ///< code 1
extern IPL_API const PLError PLError_Timeout;            ///< code 2
extern IPL_API const PLError PLError_Generic;            ///< code 3
extern IPL_API const PLError PLError_NotFound;           ///< code 4
extern IPL_API const PLError PLError_Usage;              ///< code 5
extern IPL_API const PLError PLError_InvalidParameters;  ///< code 6

/// @}

#endif  // IPL_PLERROR_H
