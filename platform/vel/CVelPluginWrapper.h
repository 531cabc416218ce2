// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLATFORM_VEL_CVELPLUGINWRAPPER_H
#define IPL_PLATFORM_VEL_CVELPLUGINWRAPPER_H

#include <string>

/// The class through which a program reaches the services of the television platform. On a device it comes with the
/// vendor's libVel.so; this declaration and the library built beside it stand in where there is none.
///
/// Only what a client needs is declared. The size of the vendor's objects is not known: whoever makes one leaves room
/// behind it (src/time/VelClient.cpp).
namespace vel {

class __attribute__((visibility("default"))) CClientAppFactory {
 public:
  enum VEL_CLIENT_TYPE { kClientType0 = 0 };
};

class __attribute__((visibility("default"))) CVelPluginWrapper {
 public:
  explicit CVelPluginWrapper(CClientAppFactory::VEL_CLIENT_TYPE type);
  virtual ~CVelPluginWrapper();
  /// Called by the library to deliver an event.
  virtual int OnEvent(int event, std::string name, std::string value);

  /// Connects to a service. Returns 0 on failure.
  int Open(std::string service, std::string version, std::string instance);
  /// Sends a command with four parameters and returns the answer.
  std::string Execute(std::string command, std::string p1, std::string p2, std::string p3, std::string p4);
  int Close();
};

}  // namespace vel

#endif  // IPL_PLATFORM_VEL_CVELPLUGINWRAPPER_H
