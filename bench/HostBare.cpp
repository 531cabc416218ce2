// SPDX-License-Identifier: Apache-2.0
#include "Host.h"

int main(int argc, char**) { return EndHost(argc); }
