// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_LOCALESERVICE_H
#define IPL_LOCALESERVICE_H

#include <stdint.h>

#include <ipl/PLExport.h>

/// @file
/// The device's "Time" and "TV" services, reached through its platform extension library libVel.so.
///
/// Each function connects on first use and keeps the connection; a connection that cannot be made is tried again by the
/// next call. Without the library or its service, and for an answer that holds no number, they return 0 and keep
/// nothing. They need no kernel object.
/// [any thread] [blocks] All three take the lock of the locale service, and hold it while the service works: a service
/// that hangs holds up every caller of these functions and of the kernel's local time, and nobody else.

/// Returns the service's epoch time minus the process's own clock, in seconds. Once it was not 0 it never changes.
IPL_API int32_t getEpochTime();

/// Returns local time minus GMT in minutes. The first answer is kept for the life of the process, unless it
/// is -1, not known yet: that gives 0, and ends the connection.
IPL_API int32_t getTimeZone_Offset();

/// Returns the service's local time for a number of seconds since 1970-01-01 00:00:00 GMT; the low 32 bits of it.
IPL_API uint32_t ConvertEpochToLocalTime(unsigned int seconds);

#endif  // IPL_LOCALESERVICE_H
