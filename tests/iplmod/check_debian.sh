#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_debian.sh IPLMOD ARM-ROOT: twenty of Debian's own libraries are no modules, and nothing else is wrong with them.
set -euo pipefail
count=0 failed=0
for library in "$2"/lib/*.so*; do
  # libthread_db needs functions of the debugger that loads it, and libstdc++ has unique symbols by intent.
  case $library in *libthread_db* | *libstdc++*) continue ;; esac
  [ $count -lt 20 ] && [ ! -L "$library" ] && head -c 4 "$library" 2> /dev/null | grep -q ELF || continue
  count=$((count + 1)) status=0
  output=$("$1" check "$library" --sysroot "$2" --modulemap "Sample:$library") || status=$?
  # Three entries are missing, and the last line says that it does not load.
  [ "$status $(grep -c ': missing-entry: ' <<<"$output") $(wc -l <<<"$output")" = "1 3 4" ] ||
    { failed=1 && echo "iplmod: $library: $output" >&2; }
done
[ $count -eq 20 ] || { echo "iplmod: only $count libraries are in $2/lib" >&2 && exit 1; }
exit $failed
