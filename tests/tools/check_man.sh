#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_man.sh MANDOC PAGE PROGRAM: the page is well formed, and describes the options and commands that the program's
# help names, no more and no less.
set -euo pipefail
"$1" -T lint -W warning "$2"
options() { grep -oE -- '(^|[^-[:alnum:]])--[a-z][a-z-]*' | grep -oE -- '--[a-z-]+' | sort -u; }
diff <("$1" -T ascii "$2" | sed 's/.\x08//g' | options) <($3 --help | options)
