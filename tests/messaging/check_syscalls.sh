#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# check_syscalls.sh PROGRAM ARGUMENT...: fails if the main thread of PROGRAM makes a system call between its lines
# "begin" and "end".
set -eu
trace=$(mktemp)
trap 'rm -f "$trace"' EXIT

# Without -f only the main thread is traced.
strace -qq -e signal=none -o "$trace" "$@"

awk '
  /^write\(1, "begin\\n", 6\) += 6/ { inside = 1; began = 1; next }
  /^write\(1, "end\\n", 4\) += 4/ { inside = 0; ended = 1 }
  inside { print "made where none is needed: " $0; bad = 1 }
  END {
    if (!began || !ended) { print "the trace has no begin and end"; bad = 1 }
    exit bad
  }' "$trace"
