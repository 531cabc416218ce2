// SPDX-License-Identifier: Apache-2.0
#include <prinit.h>

#include "Host.h"

int main(int argc, char**) {
  PR_Init(PR_USER_THREAD, PR_PRIORITY_NORMAL, 0);
  PR_Cleanup();
  return EndHost(argc);
}
