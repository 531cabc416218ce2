#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_layer.sh INCLUDE-FOLDER MODULE-SOURCE NM COMPILER [OPTION...]: compiles a module that uses all of the optional
# layer, with and without exceptions and type information, and fails if it has a symbol of the layer, of whatever kind.
# A symbol is the layer's when its name has the namespace ipl in it, as a template's argument too. One is allowed: the
# procedure of a thread that runs a callable of the module, ipl::RunCallable<that class>, as a local function. The kernel
# needs its address, so it cannot be inlined; being local it is in no dynamic symbol table, and stripping removes it.
set -euo pipefail
include=$1 module=$2 nm=$3
shift 3

library=$(mktemp)
trap 'rm -f "$library" "$library.symbols"' EXIT
for options in "-O2 -std=c++11" "-O2 -std=c++20" "-O2 -std=c++11 -fno-exceptions -fno-rtti"; do
  # shellcheck disable=SC2086
  "$@" $options -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Werror -fvisibility=default -shared -fPIC \
    -I"$include" -o "$library" -x c++ "$module"
  "$nm" "$library" >"$library.symbols"
  grep -q ' T LayerWork$' "$library.symbols" || { echo "layer: $nm does not list the module's function" >&2; exit 1; }
  procedures=$(grep -cE ' t _ZN3iplL11RunCallableIZ9LayerWorkE' "$library.symbols" || true)
  if [ "$procedures" -lt 1 ]; then
    echo "layer: the module does not use all of it with $options" >&2
    exit 1
  fi
  if grep 3ipl "$library.symbols" | grep -vE ' t _ZN3iplL11RunCallableIZ9LayerWorkE[^ ]*$'; then
    echo "layer: symbols of it are left with $* $options" >&2
    exit 1
  fi
done
