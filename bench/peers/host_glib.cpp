// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "Host.h"

int main(int argc, char**) {
  g_main_loop_unref(g_main_loop_new(nullptr, FALSE));
  return EndHost(argc);
}
