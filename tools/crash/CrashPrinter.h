// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_CRASH_CRASHPRINTER_H
#define IPL_TOOLS_CRASH_CRASHPRINTER_H

#include <ostream>
#include <vector>

#include "CrashReport.h"

void PrintText(std::ostream& out, const std::vector<CrashReport>& reports);

/// One array with an object for each report.
void PrintJson(std::ostream& out, const std::vector<CrashReport>& reports);

#endif  // IPL_TOOLS_CRASH_CRASHPRINTER_H
