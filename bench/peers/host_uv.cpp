// SPDX-License-Identifier: Apache-2.0
#include <uv.h>

#include "Host.h"

int main(int argc, char**) {
  uv_loop_t loop;
  uv_loop_init(&loop);
  uv_loop_close(&loop);
  return EndHost(argc);
}
