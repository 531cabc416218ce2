#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# check_unique.sh INCLUDE-FOLDER MODULE-SOURCE NM COMPILER [OPTION...]: builds the module as an author might who knows no
# special options, and fails if it has unique symbols: it could never be unloaded. The headers alone define nothing.
set -eu

include=$1 module=$2 nm=$3
shift 3

library=$(mktemp)
trap 'rm -f "$library" "$library.symbols" "$library.cpp"' EXIT
all=
for header in "$include"/ipl/*.h; do
  all="$all -include $header"
done
printf '' > "$library.cpp"
"$@" -std=c++17 -O0 -c -fPIC -I"$include" $all -o "$library" "$library.cpp"
if "$nm" --defined-only "$library" | grep ' [uVvWw] '; then
  echo "headers: what they define is in every module that includes them" >&2
  exit 1
fi
for level in -O0 -O2; do
  "$@" -std=c++17 "$level" -shared -fPIC -I"$include" $all -o "$library" "$module"
  "$nm" "$library" > "$library.symbols"
  grep -q ' T IPLModule_Everything_ModuleLoad$' "$library.symbols" || { echo "$nm lists no entry" >&2; exit 1; }
  if grep ' u ' "$library.symbols"; then
    echo "headers: unique symbols at $level" >&2
    exit 1
  fi
done
