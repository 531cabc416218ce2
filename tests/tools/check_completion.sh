#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_completion.sh FILE NAME COMMAND...: bash completes the options and commands that the help of the program NAME
# shows, no more and no less, and files behind them. COMMAND is how the program is run here.
set -euo pipefail
. "$1"
name=$2
shift 2
command=("$@")
eval "$name() { \"\${command[@]}\" \"\$@\"; }"
function=$(complete -p "$name" | sed -n 's/.* -F \([^ ]*\) .*/\1/p')

complete_line() { # WORD...: the last one is to be completed
  COMP_WORDS=("$name" "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  "$function" "$name" "${!#}" "${COMP_WORDS[COMP_CWORD - 1]}"
  printf '%s\n' "${COMPREPLY[@]}"
}

# Every option is named at the beginning of a line of the help, and begins with two hyphens.
help=$("$name" --help)
expected=$(sed -nE 's/^ +(--[a-z-]+).*/\1/p' <<<"$help" | sort -u)
[ "$(wc -l <<<"$expected")" -ge 2 ] || { echo "$name --help shows no options" >&2; exit 1; }
diff <(echo "$expected") <(complete_line --)
diff <(echo --help) <(complete_line --he)
commands=$(sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p' <<<"$help" | sort)
if [ -n "$commands" ]; then
  diff <(echo "$commands") <(complete_line '')
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
touch "$work/crash one.txt"
diff <(echo "$work/crash one.txt") <(complete_line --json "$work/cr")
diff <(echo "$work/crash one.txt") <(complete_line -- "$work/cr")
diff <(echo) <(complete_line -- --he)
