#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_crash.sh TOOL PROBE: ipl-crash as a program, on the report of a crash that happens here.
set -euo pipefail
tool=$1 probe=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
ulimit -c 0

failures=0
expect() {  # STATUS PATTERN ARGUMENT...: every line of PATTERN is an expression that the output has to match
  local status=0 pattern
  $tool "${@:3}" >output 2>&1 <report || status=$?
  while read -r pattern; do
    if [ "$status" != "$1" ] || ! LC_ALL=C grep -q -e "$pattern" output; then
      echo "ipl-crash ${*:3}: status $status instead of $1, or no '$pattern' in:" && cat output
      failures=$((failures + 1))
    fi
  done <<<"$2"
}

$probe crash 2>report || true
: >empty
sed 's/libm\.so/lib\xff\x1b[2J.so/' report >odd
row='^  /.*/libIPLKernel\.so  *0x[0-9a-f]*  *[0-9]*  .*r-xp .*rw-p$'
expect 0 "^standard input, line [0-9]*:$
^  signal:      SIGSEGV$
^  description: address not mapped to object$
^  process:     [0-9][0-9]*$
^  user:        $(id -u)$
^  NAME  *BASE  *SIZE  PERMISSIONS$
$row"
expect 0 'report, line' empty - report
expect 0 '"signal": "SIGSEGV"' report --json
expect 0 '"name": "/.*lib.*\[2J.so' --json odd
expect 0 '/lib.?\[2J\.so' odd
expect 1 '^ipl-crash: no report found$' empty
expect 1 '^\[\]$' --json empty
head -c 300 report >cut
expect 0 '^  The report is cut off. Missing: .*memory map\.$' cut
expect 2 "^ipl-crash: cannot read 'missing': No such file
$row" missing report
expect 2 "cannot read '/'" /
expect 2 "^ipl-crash: .*--bogus.*see 'ipl-crash --help'$" --bogus
expect 0 '--json' --help
expect 0 '^ipl-crash [0-9]*\.[0-9]*\.[0-9]*$' --version
for mistake in '<report >/dev/full' '</'; do
  status=0
  eval "$tool $mistake" 2>output || status=$?
  if [ "$status" != 2 ] || ! grep -q '^ipl-crash: cannot ' output; then
    echo "ipl-crash $mistake: status $status" && cat output
    failures=$((failures + 1))
  fi
done
exit $((failures > 0))
