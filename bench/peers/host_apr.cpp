// SPDX-License-Identifier: Apache-2.0
#include <apr_general.h>

#include "Host.h"

int main(int argc, char**) {
  apr_initialize();
  apr_terminate();
  return EndHost(argc);
}
