// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>

#include "Host.h"

int main(int argc, char** argv) {
  { const QCoreApplication application(argc, argv); }
  return EndHost(argc);
}
