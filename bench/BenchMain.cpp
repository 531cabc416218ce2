// SPDX-License-Identifier: Apache-2.0
#include <future>
#include <thread>

#include "Bench.h"

int main(int argc, char** argv) {
  std::promise<void> end;
  std::thread second([&] { end.get_future().wait(); });
  benchmark::Initialize(&argc, argv);
  const bool good = !benchmark::ReportUnrecognizedArguments(argc, argv);
  if (good) {
    benchmark::RunSpecifiedBenchmarks();
  }
  end.set_value();
  second.join();
  return good ? 0 : 1;
}
