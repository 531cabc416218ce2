// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_HOST_H
#define IPL_BENCH_HOST_H

#include <unistd.h>

#include <string>

/// The end of every host's main: with an argument it tells that it is done and waits, so that its memory can be looked
/// at. The text makes it a program that uses the C++ library.
inline int EndHost(int argc) {
  const std::string text(argc > 1 ? "done" : "");
  char byte = 0;
  const bool waited = text.empty() || (::write(1, text.data(), 1) == 1 && ::read(0, &byte, 1) >= 0);
  return waited ? 0 : 1;
}

#endif  // IPL_BENCH_HOST_H
