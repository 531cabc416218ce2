#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_gdb.sh GDB BUILD PROBE MODULE [EMULATOR...]: installs the library, stops the probe where it enters Receive and
# compares what GDB, which finds its scripts by itself, prints of the process and of its core with expected.txt.
set -euo pipefail
gdb=$1 build=$2 probe=$3 module=$4 expected=$(dirname "$0")/expected.txt && shift 4
work=$(mktemp -d)
trap 'kill %1 2>/dev/null || true; rm -rf "$work"' EXIT
for folder in src tools; do cmake -DCMAKE_INSTALL_PREFIX="$work" -P "$build/$folder/cmake_install.cmake"; done >"$work/log"
libraries=$work/lib:$build/lib

# debug COMMANDS EXPECTED OPTION...: numbers addresses, and leaves out where a thread on its way just is.
debug() {
  { printf "%b\n" "$1" 'echo begin\\n' 'set trace-commands on'; sed -n 's/^+//p' "$2"; } >"$work/commands"
  LC_ALL=C timeout 200 "$gdb" -q -nx -iex "add-auto-load-safe-path $work" -iex 'set debuginfod enabled off' \
    -iex "add-auto-load-scripts-directory $work/share/gdb/auto-load" -iex 'set prompt' -iex 'set confirm off' \
    -iex 'set width 0' "${@:3}" <"$work/commands" >"$work/output" 2>&1 || true
  ! grep -E 'ptrace: |trace the inferior' "$work/output" || exit 77
  sed -E "1,/^begin$/d; s|$work|WORK|g; s|$module|MODULE|g; s/(LWP|process) [0-9]+/\1/; s/(kernel time) [0-9.]+/\1 T/
    s/, thread [34] in .*//; /^(\+quit)?$/d" "$work/output" |
    awk '{ while (match($0, /0x[0-9a-f][0-9a-f][0-9a-f][0-9a-f]+/)) {
             address = substr($0, RSTART, RLENGTH)
             sub(address, address in names ? names[address] : names[address] = "@" ++count) } print }' |
    diff - "$2" || { cat "$work/output"; exit 1; }
}

stop='tbreak KernelEvent::Wait thread 1\ncontinue'
if [ $# -gt 0 ]; then
  "$@" -E "LD_LIBRARY_PATH=$libraries" -g "$work/socket" "$probe" --modulemap "Lingerer:$module" &
  for ((i = 0; i < 1200; ++i)); do [ -S "$work/socket" ] && break; sleep 0.05; done
  debug "target remote $work/socket\nbreak Stop\ncontinue\n$stop" "$expected" \
    -iex "set sysroot ${!#}" -iex "set solib-search-path $libraries" "$probe"
  exit 0
fi
debug "set environment LD_LIBRARY_PATH $libraries\nbreak Stop\nrun\n$stop\ngenerate-core-file $work/core" "$expected" \
  --args "$probe" --modulemap "Lingerer:$module"
sed '/^+set var/,$d' "$expected" >"$work/expected"
debug '' "$work/expected" "$probe" "$work/core"
