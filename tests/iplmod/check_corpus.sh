#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_corpus.sh IPLMOD INCLUDE-FOLDER KERNEL ARM-ROOT: builds modules with one fault each, and good ones; what is found
# has to be just that.
set -euo pipefail
iplmod=$1 include=$2 kernel=$3 arm_root=$4
source=$(dirname "$0")/Module.cpp
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0
fail() { failed=1 && echo "iplmod: $*" >&2; }

# check NAME EXPECTED-STATUS EXPECTED-FINDINGS ARGUMENT...
check() {
  local status=0 found json
  "$iplmod" check "${@:4}" > "$folder/output" 2>&1 || status=$?
  found=$(sed -nE 's/^[^ ]*: ([a-z]+-[a-z-]+): .*/\1/p' "$folder/output" | xargs)
  json=$({ "$iplmod" check --json "${@:4}" 2> /dev/null || true; } | sed -nE 's/^ *"name": "(.*)",?$/\1/p' | xargs)
  [ "$found" = "$3" ] && [ "$json" = "$3" ] && [ $status -eq "$2" ] ||
    fail "$1: status $status, found '$found', JSON '$json'; $(cat "$folder/output")"
}

# Libraries to link with that will not be there, or not with this version.
stub() { echo 'int ipl_future(void) { return 0; }' | gcc -x c -fPIC -shared -nostdlib -Wl,-soname,"$1" - "${@:2}"; }
echo 'GLIBC_2.99 { global: *; };' > "$folder/future.map"
stub libgone.so -o "$folder/libgone.so"
stub libc.so.6 -o "$folder/libc.so.6" -Wl,--version-script="$folder/future.map"

defaults=(-fPIC -shared -nostdlib -fno-gnu-unique -funwind-tables -w -I "$include" '-DLOAD_LINKAGE=extern "C"'
  -DUNLOAD=IPLModule_Sample_ModuleUnload -DUNLOAD_EXPORT=IPL_API -DUSE_ATTRIBUTE=)
while IFS='|' read -r name status findings target file options; do
  module=$folder/$name/$file
  compiler=g++ arguments=(--kernel "$kernel")
  [ "$target" = native ] || compiler=arm-linux-gnueabihf-g++ arguments=(--sysroot "$arm_root")
  mkdir "$folder/$name" && read -ra words <<<"${options//@/$folder}"
  "$compiler" "${defaults[@]}" "$source" -o "$module" "${words[@]}"
  [ "$name" != missing-library ] || rm "$folder/libgone.so"
  check "$name" "$status" "$findings" "$module" "${arguments[@]}"
done <<'TABLE'
good|0||native|libSample.so|-DUSE=getpid -lc
good-with-kernel-symbol|0||native|libSample.so|-DUSE=IPLModule_IPLKernel_LoadModule
good-with-weak-symbol|0||native|libSample.so|-DUSE=ipl_nowhere -DUSE_ATTRIBUTE=__attribute__((weak))
good-arm|0||arm|libSample.so|-DUSE=getpid -lc
missing-entry|1|missing-entry|native|libSample.so|-DUNLOAD=IPLModule_Sample_ModuleUnloaded
hidden-entry|1|missing-entry|native|libSample.so|-DUNLOAD_EXPORT= -fvisibility=hidden
mangled-entry|1|mangled-entry|native|libSample.so|-DLOAD_LINKAGE=
no-module-name|1|module-name|native|Sample.so|
undefined-symbol|1|undefined-symbol|native|libSample.so|-DUSE=ipl_nowhere
no-kernel|1|undefined-symbol|arm|libSample.so|-DUSE=IPLModule_IPLKernel_LoadModule
unique-symbol|0|unique-symbol|native|libSample.so|-DUNIQUE -fgnu-unique
no-unwind-tables|0|no-unwind-tables no-unwind-tables no-unwind-tables|native|libSample.so|-fno-asynchronous-unwind-tables -fno-unwind-tables -fno-exceptions
no-unwind-tables-arm|0|no-unwind-tables no-unwind-tables no-unwind-tables|arm|libSample.so|-fno-unwind-tables
text-relocation|0|text-relocation|native|libSample.so|-DTEXT_RELOCATION -Wl,-z,notext
rpath|0|baked-path|native|libSample.so|-Wl,--disable-new-dtags,-rpath,/build/lib
runpath-of-two|0|baked-path|native|libSample.so|-Wl,--enable-new-dtags,-rpath,$ORIGIN:/build/lib
soname-with-path|0|baked-path|native|libSample.so|-Wl,-soname,/build/libSample.so
missing-library|1|missing-library|native|libSample.so|-DUSE=ipl_future -L@ -lgone
soft-float|1|float-abi|arm|libSample.so|-mfloat-abi=soft
missing-version|1|missing-version|native|libSample.so|-DUSE=ipl_future @/libc.so.6
TABLE
grep -q 'does not load, needs GLIBC_2.99$' "$folder/output" || fail "the newest version is not told"

# Other files, and the same ones seen otherwise.
good=$folder/good/libSample.so unnamed=$folder/no-module-name/Sample.so
check source-file 1 not-a-library "$source" --kernel "$kernel"
check program 1 not-a-library "$iplmod" --kernel "$kernel"
check wrong-machine 1 wrong-machine "$folder/good-arm/libSample.so" --kernel "$kernel"
check wrong-machine-of-the-root 1 wrong-machine "$good" --sysroot "$arm_root"
check mapped 0 '' "$unnamed" --kernel "$kernel" --modulemap Sample: --modulemap "Sample::$unnamed"
check mapped-otherwise 1 'missing-entry missing-entry' "$good" --kernel "$kernel" --modulemap "Other:$good"
check good-and-bad 1 missing-entry "$folder/missing-entry/libSample.so" "$good" --kernel "$kernel"
check no-such-file 2 '' "$good" "$folder/none.so" --kernel "$kernel"
exit $failed
