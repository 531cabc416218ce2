// SPDX-License-Identifier: Apache-2.0
#include <Poco/ThreadPool.h>

#include "Host.h"

int main(int argc, char**) {
  { const Poco::ThreadPool pool; }
  return EndHost(argc);
}
