#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# check_calls.sh NM OBJECT...: fails if an object of the crash report needs anything that is not safe in a signal handler;
# the one that installs the handler needs more.
set -eu
nm=$1
shift
[ $# -eq 4 ] || { echo "not the four objects of the crash report: $*"; exit 1; }
"$nm" -u "$@" | awk '
  BEGIN {
    safe = "write|open(64)?|read|close|getpid|getuid|abort|__errno_location|__aeabi_(u?idiv(mod)?|unwind_cpp_pr[0-9])"
    safe = safe "|_GLOBAL_OFFSET_TABLE_|_ZN22KernelFaultHandlerImpl.*|_Z[0-9]+FindSignal.*"
    installing = "|sigaction|sigemptyset|memset|__(cxa|aeabi)_(atexit|guard.*)|_ZdlPv[jm]|_ZTV.*|__dso_handle"
  }
  $1 != "U" { object = $1; next }
  { seen = seen " " $2 " " }
  $2 !~ "^(" safe (object ~ /HandlerImpl/ ? installing : "") ")$" { print object, "needs", $2; bad = 1 }
  END { exit bad || seen !~ / write / || seen !~ / abort / }'
