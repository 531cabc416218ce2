#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# check_headers.sh INCLUDE-FOLDER MODULE-SOURCE STANDARD COMPILER [OPTION...]: compiles each public header as a program's
# first include, and twice, without a warning; then all of them together, in a module that uses them.
set -u

include=$1 module=$2 standard=$3
shift 3

command -v "$1" > /dev/null || { echo "headers: the compiler $1 is missing" >&2; exit 1; }

compile() {
  "$@" -std="$standard" -I"$include" -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast \
    -Wnon-virtual-dtor -Werror -x c++ "$source"
}

failed=0 all=
for header in "$include"/ipl/*.h; do
  [ -f "$header" ] || { echo "headers: there is none in $include/ipl" >&2; exit 1; }
  name=ipl/${header##*/}
  source=-
  printf '#include <%s>\n#include <%s>\n' "$name" "$name" | compile "$@" ||
    { echo "headers: $name does not compile alone with $* -std=$standard" >&2; failed=1; }
  all="$all -include $name"
done
source=$module
compile "$@" $all || { echo "headers: $module does not compile with $* -std=$standard" >&2; failed=1; }
exit $failed
