// SPDX-License-Identifier: Apache-2.0
// libIPLVelClient.so: all that knows the class of the platform's libVel.so.
#include "time/VelClient.h"

#include <CVelPluginWrapper.h>
#include <stdlib.h>
#include <string.h>

#include <new>
#include <string>

namespace vel {

namespace {

// The vendor's objects are of a size that only the vendor knows.
constexpr size_t kRoom = 4096;

}  // namespace

/// What both clients share: the room that their allocation reserves, and a deaf ear for events.
class VelLocaleClient : public CVelPluginWrapper {
 public:
  VelLocaleClient() : CVelPluginWrapper(CClientAppFactory::VEL_CLIENT_TYPE(0)) {}
  int OnEvent(int, std::string, std::string) override { return 1; }

  // The ordinary heap: the connections outlast the kernel object.
  static void* operator new(size_t size) { return ::operator new(size + kRoom); }
  static void operator delete(void* client) { ::operator delete(client); }
};

class CVelLocaleTimeClient : public VelLocaleClient {};
class CVelLocaleTVClient : public VelLocaleClient {};

}  // namespace vel

namespace {

// An exception out of the platform's library counts as a failure.
template <typename Client>
void Destroy(Client* client) {
  try {
    delete client;
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
}

template <typename Client>
Client* Open(const char* service) {
  Client* client = nullptr;
  try {
    client = new Client;
    if (client->Open(service, "1.000", service) != 0) {
      return client;
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
  Destroy(client);
  return nullptr;
}

template <typename Client>
char* Execute(Client* client, const char* command, const char* parameter) {
  try {
    const std::string answer = client->Execute(command, parameter, "", "", "");
    return ::strdup(answer.empty() ? "" : answer.c_str() + 1);
  } catch (...) {
    return nullptr;
  }
}

template <typename Client>
void Close(Client* client) {
  try {
    client->Close();
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
  Destroy(client);
}

constexpr VelClientOperations kOperations = {
    [] { return Open<vel::CVelLocaleTimeClient>("Time"); },
    [] { return Open<vel::CVelLocaleTVClient>("TV"); },
    Execute<vel::CVelLocaleTimeClient>,
    Execute<vel::CVelLocaleTVClient>,
    Close<vel::CVelLocaleTimeClient>,
    Close<vel::CVelLocaleTVClient>,
};

}  // namespace

const VelClientOperations* IPLVelClient_GetOperations(void) { return &kOperations; }
