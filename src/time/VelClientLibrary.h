// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIME_VELCLIENTLIBRARY_H
#define IPL_TIME_VELCLIENTLIBRARY_H

#include "time/VelClient.h"

/// Opens libIPLVelClient.so, and with it the platform's libVel.so: as the loader finds them, for which
/// the kernel library's run path names its own folder, else beside the kernel library. Once opened it stays. Returns
/// null if that fails; the next call tries again. It takes the dynamic loader's lock, so it is called without a lock of
/// the kernel that a module's static construction may want. [any thread]
const VelClientOperations* LoadVelClientOperations();

/// Returns what LoadVelClientOperations has opened, null if nothing. [any thread]
const VelClientOperations* GetVelClientOperations();

#endif  // IPL_TIME_VELCLIENTLIBRARY_H
