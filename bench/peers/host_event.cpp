// SPDX-License-Identifier: Apache-2.0
#include <event2/event.h>

#include "Host.h"

int main(int argc, char**) {
  event_base_free(event_base_new());
  return EndHost(argc);
}
