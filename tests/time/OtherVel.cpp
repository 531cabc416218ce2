// SPDX-License-Identifier: Apache-2.0
// A vendor's libVel.so: more in its objects than is declared, an object that ends with the process, exceptions.
#include <CVelPluginWrapper.h>
#include <stdlib.h>
#include <string.h>

#include <memory>

static const std::shared_ptr<void> s_state(nullptr, [](void*) { fputs("gone\n", stderr); });

static int Log(const std::string& operation, const std::string& arguments = "") {
  fputs((operation + arguments + "\n").c_str(), stderr);
  const char* throws = getenv("OTHER_VEL_THROWS");
  return throws != nullptr && throws == operation ? throw operation : 1;
}

using Text = std::string;
using Client = vel::CVelPluginWrapper;
Client::CVelPluginWrapper(vel::CClientAppFactory::VEL_CLIENT_TYPE type) {
  memset(reinterpret_cast<char*>(this) + sizeof(*this), 'x' + type, 4000);
  Log("construct");
}
Client::~CVelPluginWrapper() { Log("destroy ", {reinterpret_cast<char*>(this) + sizeof(*this) + 3997, 3}); }
int Client::OnEvent(int, Text, Text) { return 0; }
int Client::Open(Text service, Text version, Text instance) { return Log("Open", " " + service + version + instance); }
Text Client::Execute(Text command, Text p1, Text p2, Text p3, Text p4) {
  return Log("Execute", " " + command + p1 + p2 + p3 + p4), OnEvent(1, "event", "value") == 1 ? "x60" : "";
}
int Client::Close() { return Log("Close"); }
