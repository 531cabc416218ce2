#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_pages.sh SOURCE_DIR COMPILER LIBRARY HOST WORK_DIR [EMULATOR...]: takes the programs and the commands that build and
# run them out of README.md, the first pages and that of the optional layer, does what their reader would do, one page after the other in one folder,
# and compares the output with what the page promises ("# prints: TEXT" behind a command).
set -euo pipefail
source_dir=$1 compiler=$2 library=$3 host=$4 work=$5
shift 5

rm -rf "$work"
mkdir -p "$work"
ln -s "$source_dir/include" "$work/include"
ln -s "$(dirname "$library")" "$work/lib"
ln -s "$(dirname "$host")" "$work/bin"
cd "$work"
# A page's options are those of GCC; what a page shows compiles without a warning.
compile() { "$compiler" -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Werror "$@"; }

promises=0
for page in README docs/first-module docs/first-host docs/layer; do
  # Each block goes to the file that its first line names; the lines of sh blocks to commands.
  rm -f commands
  awk '/^```cpp/ { block = "cpp"; next } /^```sh/ { block = "sh"; next } /^```/ { block = ""; file = ""; next }
       block == "cpp" && file == "" { file = $2 }
       block == "cpp" { print > file }
       block == "sh" { print > "commands" }' "$source_dir/$page.md"
  while read -r command; do
    case $command in
      'g++ '*) compile ${command#g++ } ;;
      *'# prints: '*)
        promised=${command##*'# prints: '}
        command=${command%%#*}
        printed=$(LD_LIBRARY_PATH=lib "$@" ${command#LD_LIBRARY_PATH=lib })
        if [ "$printed" != "$promised" ]; then
          echo "$page.md promises '$promised', '$command' printed '$printed'" >&2
          exit 1
        fi
        promises=$((promises + 1))
        ;;
    esac
  done <commands
done
[ "$promises" -eq 3 ] || { echo "the pages keep $promises promises, not 3" >&2; exit 1; }
