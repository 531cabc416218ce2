#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_faults.sh: plants each fault in a small package of its own and expects check_packages.py to name it, and nothing
# else; the package without a fault is clean.
set -euo pipefail
check=$(dirname "$(realpath "$0")")/check_packages.py
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
lib=one/usr/lib
compiler=arm-linux-gnueabihf-gcc

cat >one.c <<'END'
#include <stdio.h>
#include <time.h>
int one(const char* name) { return printf("%s %lld\n", name, (long long)time(0)); }
END
sed 's/^int one/const char* place = "\/build\/here"; &/' one.c >path.c
# An address in code, as code that is not position-independent has them.
printf '.text\n.global two\ntwo: .word one\n.section .note.GNU-stack\n' >textrel.s

library() { # OPTION...: a stripped library with its debug information in the package beside it
  rm -rf one one-dbgsym two
  mkdir -p $lib/pkgconfig
  "$compiler" -shared -fPIC -g -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64 -Wl,--build-id "$@" -o $lib/libone.so
  local id
  id=$(readelf -n $lib/libone.so | sed -n 's/.*Build ID: //p')
  debug=one-dbgsym/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug
  mkdir -p "$(dirname "$debug")"
  arm-linux-gnueabihf-objcopy --only-keep-debug --compress-debug-sections $lib/libone.so "$debug"
  cp $lib/libone.so ../unstripped.so
  arm-linux-gnueabihf-strip $lib/libone.so
  printf '%s\n' 'prefix=${pcfiledir}/../../..' 'Libs: -L${prefix}/lib -lone' >$lib/pkgconfig/one.pc
}
expect() { # FINDING OPTION...
  local finding=$1
  "$check" --build-path /build/here "${@:2}" * >../found 2>&1 && status=0 || status=$?
  [ "$finding" = none ] && [ "$status" = 0 ] && return
  [ "$status" = 1 ] && [ "$(sed '/ Oldest system: /d; s/: .*//' ../found | sort -u)" = "$finding" ] && return
  echo "check_faults: expected '$finding', found:" >&2
  cat ../found >&2
  exit 1
}

mkdir packages
cd packages
library ../one.c; expect none
grep -q 'Oldest system: C library 2.34, C++ library any, Linux any$' ../found
expect none --max-glibc 2.34
expect glibc-too-new --max-glibc 2.33
library ../path.c; expect build-path
library -ffile-prefix-map="$work=/build/here" "$work/one.c"; expect build-path  # in compressed debug information
library ../one.c; gzip -n <../path.c >one/usr/path.gz; expect build-path
library ../one.c; patchelf --set-rpath '$ORIGIN' $lib/libone.so; expect runpath
library ../one.c; patchelf --force-rpath --set-rpath '$ORIGIN' $lib/libone.so; expect runpath
library ../one.c ../textrel.s -Wl,-z,notext; expect text-relocation
library ../one.c -Wl,--hash-style=sysv; expect hash-style
library ../one.c -Wl,--hash-style=both; expect hash-style
library ../one.c -U_TIME_BITS; expect 32-bit-time
library ../one.c; cp ../unstripped.so $lib/libone.so; expect not-stripped
library ../one.c; rm "$debug"; expect no-debug-file
library ../one.c; arm-linux-gnueabihf-objcopy -R .note.gnu.build-id $lib/libone.so; expect no-build-id
library ../one.c; echo 'Libs: -L/usr/lib' >>$lib/pkgconfig/one.pc; expect pc-not-relocatable
library ../one.c; echo 'Libs: -Lx' >$lib/pkgconfig/one.pc; expect pc-not-relocatable
library ../one.c; mkdir -p two/usr/lib; touch two/usr/lib/libone.so; expect owned-twice
rm -r *; mkdir -p one/usr; expect nothing-checked
echo "Each fault is found."
