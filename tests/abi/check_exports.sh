#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# check_exports.sh NM OBJDUMP LIBRARY LIST: compares the dynamic symbols that LIBRARY defines with LIST, which has a line
# "type name" for each, as nm gives them, sorted. With --print in place of LIST it prints them, to make the list anew
# after a wanted change.
set -eu

nm=$1 objdump=$2 library=$3 list=$4
export LC_ALL=C

fail() {
  echo "exports: $*" >&2
  exit 1
}

symbols=$(mktemp)
trap 'rm -f "$symbols" "$symbols.raw"' EXIT
"$nm" -D --defined-only "$library" > "$symbols.raw" || fail "$nm cannot read $library"
awk '{ print $2, $3 }' "$symbols.raw" | sort > "$symbols"

if [ "$list" = --print ]; then
  cat "$symbols"
  exit 0
fi

[ -s "$symbols" ] || fail "$library defines no dynamic symbol"
soname=$("$objdump" -p "$library" | awk '$1 == "SONAME" { print $2 }')
[ "$soname" = libIPLKernel.so ] || fail "SONAME is '$soname', not libIPLKernel.so"
if grep '^u ' "$symbols"; then
  fail "unique symbols: a module that shares one is never unloaded"
fi
if ! diff -u --label "wanted: $list" --label "exported by $library" "$list" "$symbols"; then
  fail "the exported symbols have changed (lines with + are new, lines with - are gone); for a wanted change:" \
    "$0 $nm $objdump $library --print > $list"
fi
