// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIME_VELCLIENT_H
#define IPL_TIME_VELCLIENT_H

#include <ipl/PLExport.h>

/// The boundary between the kernel and the small library libIPLVelClient.so, which is linked with the platform's
/// libVel.so. The kernel opens it when it is first needed, so that it runs where there is no libVel.so. Nothing of the
/// C++ library crosses this boundary, and no exception.

namespace vel {
class CVelLocaleTimeClient;
class CVelLocaleTVClient;
}  // namespace vel

struct VelClientOperations {
  /// Make a client and connect it to its service; null if that fails.
  vel::CVelLocaleTimeClient* (*openTime)();
  vel::CVelLocaleTVClient* (*openTV)();
  /// Sends a command with one parameter. Returns the answer behind its first character, which the caller frees with
  /// free; null if that fails.
  char* (*executeTime)(vel::CVelLocaleTimeClient* client, const char* command, const char* parameter);
  char* (*executeTV)(vel::CVelLocaleTVClient* client, const char* command, const char* parameter);
  /// Close the connection and destroy the client.
  void (*closeTime)(vel::CVelLocaleTimeClient* client);
  void (*closeTV)(vel::CVelLocaleTVClient* client);
};

#define IPL_VEL_CLIENT_ENTRY "IPLVelClient_GetOperations"

extern "C" IPL_API const VelClientOperations* IPLVelClient_GetOperations(void);

#endif  // IPL_TIME_VELCLIENT_H
