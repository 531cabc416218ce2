// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_MODULECASES_H
#define IPL_BENCH_MODULECASES_H

#include "Bench.h"
#include "ModuleFile.h"

/// A class whose constructor opens a file and finds its symbols, and whose destructor closes it, is measured with the
/// module's file: when something holds it open, and when nothing does.

template <typename Library>
void MeasureLibrary(const std::string& who, bool whenLoaded = true) {
  const auto openAndClose = [](State& state) {
    while (state.KeepRunning()) {
      const Library library(kModuleFile);
      if (!library.IsOpen()) {
        state.SkipWithError("not opened");
      }
    }
  };
  Measure("ModuleFresh/" + who, openAndClose);
  if (!whenLoaded) {
    return;
  }
  Measure("ModuleLoaded/" + who, [openAndClose](State& state) {
    const Library held(kModuleFile);
    openAndClose(state);
  });
}

#endif  // IPL_BENCH_MODULECASES_H
