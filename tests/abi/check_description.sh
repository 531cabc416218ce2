#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_description.sh SOURCE-FOLDER LIBRARY: the description of the binary interface in the repository is that of
# LIBRARY. Then the same comparison is shown to find what must never happen, in copies of the interface's header.
set -euo pipefail
root=$1 library=$2 golden=$1/tests/abi/IPLKernel.arm.abi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { echo "abi: $*" >&2 && exit 1; }

"$root/script/abi-update" "$library" "$folder/library.abi"
# An empty description would have no differences either. 74 slots, less the destructor's two, which count as one.
for description in "$golden" "$folder/library.abi"; do
  for class in IPLKernel Lockable Mutex Event Thread Message MessageQueue TimerMessageData Stacktrace Time CalendarTime; do
    grep -q "<class-decl name='$class' size-in-bits=" "$description" || fail "$description lacks the class $class"
  done
  for slot in $(seq 2 73); do
    grep -q "^      <member-function .*vtable-offset='$slot'" "$description" || fail "$description lacks slot $slot"
  done
  for symbol in IPLModule_IPLKernel_{LoadModule,InitializeKernel,UnloadModule} _ZN9IPLKernel9GetKernelEv; do
    grep -q "elf-symbol-id='$symbol'" "$description" || fail "$description does not describe $symbol"
  done
done
abidiff "$golden" "$folder/library.abi" || fail "the binary interface has changed (abidiff: $?)"

# describe NAME SED-SCRIPT: describes the interface as the changed header would make it.
describe() {
  local header=$folder/$1/ipl/IPLKernel.h
  mkdir "$folder/$1" && cp -r "$root/include/ipl" "$folder/$1"
  sed -i "$2" "$header"
  [ -z "$2" ] || ! cmp -s "$root/include/ipl/IPLKernel.h" "$header" || fail "$1: the header has not changed"
  printf '#include <ipl/IPLKernel.h>\nIPLKernel* IPLKernel::GetKernel() { return nullptr; }\n' |
    arm-linux-gnueabihf-g++ -std=c++17 -g -fPIC -shared -nostdlib -femit-class-debug-always \
      -fno-eliminate-unused-debug-types -I "$folder/$1" -x c++ - -o "$folder/$1.so"
  "$root/script/abi-update" "$folder/$1.so" "$folder/$1.abi"
}
describe unchanged ''
describe again ''
abidiff "$folder/unchanged.abi" "$folder/again.abi" || fail "a difference without a change"
while IFS='|' read -r change script; do
  describe "$change" "$script"
  abidiff "$folder/unchanged.abi" "$folder/$change.abi" > "$folder/$change.txt" && status=0 || status=$?
  # 4: the interface differs; 1 and 2 are failures of the program itself.
  [ $((status & 7)) -eq 4 ] || fail "$change: abidiff ends with $status"
  echo "$change: found"
done <<'TABLE'
swapped-slots|s/GetUniqueID() = 0/GetSwapped() = 0/; s/GetProcessID() = 0/GetUniqueID() = 0/; s/GetSwapped/GetProcessID/
swapped-slots-of-a-queue|s/void Send(/void Swap(/; s/void Post(/void Send(/; s/void Swap(/void Post(/
added-slot|/slot 73$/a virtual int Added() = 0;
dropped-slot|/slot 73$/d
moved-field|s/ minute;/ swapped;/; s/ hour;/ minute;/; s/ swapped;/ hour;/
TABLE
