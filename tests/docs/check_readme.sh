#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_readme.sh SOURCE_DIR COMPILER LIBRARY WORK_DIR [EMULATOR...]: takes the module, the host and the commands that
# build them out of README.md, does what the reader would do and compares the output with what README.md promises.
set -euo pipefail
source_dir=$1 compiler=$2 library=$3 work=$4
shift 4

rm -rf "$work"
mkdir -p "$work"
ln -s "$source_dir/include" "$work/include"
ln -s "$(dirname "$library")" "$work/lib"
cd "$work"

# Each block goes to the file that its first line names; the lines of sh blocks to commands.
awk '/^```cpp/ { block = "cpp"; next } /^```sh/ { block = "sh"; next } /^```/ { block = ""; file = ""; next }
     block == "cpp" && file == "" { file = $2 }
     block == "cpp" { print > file }
     block == "sh" { print > "commands" }' "$source_dir/README.md"

grep '^g++ ' commands | sed "s|^g++|$compiler -Wall -Wextra -Wpedantic -Wshadow -Werror|" >compile
[ "$(wc -l <compile)" -eq 2 ] || { echo "README.md shows $(wc -l <compile) compile commands, not 2" >&2; exit 1; }
bash -eux compile

run=$(grep '^LD_LIBRARY_PATH=lib ./host' commands)
arguments=${run%%#*}
arguments=${arguments#LD_LIBRARY_PATH=lib ./host}
promised=${run##*prints: }
printed=$(LD_LIBRARY_PATH=lib "$@" ./host $arguments)
if [ "$printed" != "$promised" ]; then
  echo "README.md promises '$promised', the host printed '$printed'" >&2
  exit 1
fi
