// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_PIPELINE_OPTIONS_H
#define IPL_EXAMPLES_PIPELINE_OPTIONS_H

#include <ipl/IPLKernel.h>

#include "pipeline/Arguments.h"

namespace pipeline {

/// What the command line asks of the pipeline: [--progress] [--stamp] [--charset NAME] FILE..., options anywhere. Each
/// module reads it for itself; TextReader tells of mistakes.
struct Options {
  bool progress = false;          ///< for Progress: also where standard error is no terminal
  bool stamp = false;             ///< for TextReport: the local time above the report
  const char* charSet = nullptr;  ///< for TextReader: what the files are written in; null: UTF-8
  unsigned long fileCount = 0;
  const char* mistaken = nullptr;  ///< an option that is wrong, null if none is
  const char* mistake = nullptr;   ///< what is wrong with it
};

Options ReadOptions(IPLKernel* kernel);

/// Goes to the next word that is a file's name, and takes the options in front of it over. Returns false at the end.
bool NextFile(Arguments& arguments, Options& options);

}  // namespace pipeline

#endif  // IPL_EXAMPLES_PIPELINE_OPTIONS_H
