#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_loglevel.sh TOOL PROBE: ipl-loglevel beside a running process. The segment is the machine's, so all of this
# happens in shared memory of its own.
set -euo pipefail
if [ -z "${IN_OWN_MEMORY:-}" ]; then
  own=(unshare --map-root-user --ipc)
  "${own[@]}" true || exit 77
  exec env IN_OWN_MEMORY=1 "${own[@]}" "$0" "$@"
fi
tool=$1
$2 </dev/null # does it run at all
coproc PROBE { exec $2; }

failures=0
fail() { echo "$*" && failures=$((failures + 1)); }
expect() {  # STATUS OUTPUT ARGUMENT...: the whole output, or a part of it if the tool refuses
  local status=0 output
  output=$($tool "${@:3}" 2>&1) || status=$?
  if [ "$status" != "$1" ] || { [ "$1" = 0 ] && [ "$output" != "$2" ]; } || [[ $output != *"$2"* ]]; then
    fail "ipl-loglevel ${*:3}: status $status: $output"
  fi
}
decides() {  # DECISIONS: of the running process, for the messages of this table
  local message answer decisions=
  for message in '0 0' '5 0' '0 1' '0 -1' '3 2' '3 3' '4 1' '-7 -9' '-1 5' '-1 -5'; do
    echo "$message" >&"${PROBE[1]}"
    read -r answer <&"${PROBE[0]}"
    decisions+=$answer
  done
  [ "$decisions" = "$1" ] || fail "decisions $decisions instead of $1"
}
shows() { expect 0 "category: $1"$'\n'"level:    $2"$'\n'"enabled:  $3" show; }
nothing='The segment does not exist: no process has asked for a log level yet, and nothing is set.'

expect 0 "$nothing" show
expect 0 "$nothing" show # the first one did not create it
decides 1101000000
shows 0 0 'category 0 at levels up to 0, and level 0 of every category'
expect 0 '' set 3 2
decides 1100100000
shows 3 2 'category 3 at levels up to 2, and level 0 of every category'
expect 0 '' set -7 -9
decides 1100000100
expect 0 '' all
decides 1111111111
shows '8 (every category)' 0 'every category and level'
expect 0 '' off
decides 1100000000
shows '-1 (no category)' -2147483648 'level 0 of every category'
ipcrm -M 42343
expect 0 '' set 2147483647 -2147483648 # creates it
decides 1100000000
ipcs -m | grep -Eq '^0x0000a567 +[0-9]+ +[^ ]+ +666 +8 ' || fail "$(ipcs -m)"

while read -r mistake; do
  expect 2 "see 'ipl-loglevel --help'" $mistake
done <<<'
bogus
set
set 3
set 3 x
set 3 2147483648
set 010 1
set true 1
set 3 2 1
show 1
all off
--bogus'
expect 2 "is no number" set '' 1
shows 2147483647 -2147483648 'category 2147483647 at levels up to -2147483648, and level 0 of every category'

status=0
$tool show >/dev/full 2>/dev/null || status=$?
[ "$status" = 1 ] || fail "status $status without room for the output"
ipcrm -M 42343
if echo 0 2>/dev/null >/proc/sys/kernel/shmmni; then
  expect 1 'ipl-loglevel: cannot use the shared memory with key 42343: No space left on device' all
  expect 0 "$nothing" show
fi
exit $((failures > 0))
