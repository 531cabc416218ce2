// SPDX-License-Identifier: Apache-2.0
#include "pipeline/Options.h"

namespace pipeline {

Options ReadOptions(IPLKernel* kernel) {
  Options options;
  Arguments arguments(kernel);
  while (NextFile(arguments, options)) {
    ++options.fileCount;
  }
  return options;
}

bool NextFile(Arguments& arguments, Options& options) {
  while (arguments.Next()) {
    if (!arguments.IsOption()) {
      return true;
    }
    if (arguments.IsOption("--progress")) {
      options.progress = true;
    } else if (arguments.IsOption("--stamp")) {
      options.stamp = true;
    } else if (arguments.IsOption("--charset")) {
      options.charSet = arguments.TakeValue();
      if (options.charSet == nullptr) {
        options.mistaken = "--charset";
        options.mistake = "needs a value";
      }
    } else {
      options.mistaken = arguments.GetWord();
      options.mistake = "unknown option";
    }
  }
  return false;
}

}  // namespace pipeline
