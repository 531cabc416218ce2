#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# prove_integrator.sh PACKAGES DEVICE_VEL_SOURCE...: what an integrator does: fills an empty root with the armhf packages
# and a C library, and runs the host in it under emulation, with that root as its only library path. Then the device's
# libVel.so, which is compiled here, takes the stand-in's place. Nothing but these arguments comes from the source tree.
set -euo pipefail
packages=$1 vel_source=("${@:2}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
libraries=/usr/lib/arm-linux-gnueabihf
failed() { echo "prove_integrator: $1" >&2; cat "$work/out" >&2; exit 1; }

mkdir -p "$root/lib"
for package in libiplkernel libiconv2 libvel-standin iplkernel-tools iplkernel-examples; do
  dpkg-deb -x "$packages/${package}"_*_armhf.deb "$root"
  grep -q '^License: ' "$root/usr/share/doc/$package/copyright"
done
grep -q 'Apache License' "$root/usr/share/licenses/IPLKernel/LICENSE"
grep -q 'GNU LIBRARY GENERAL PUBLIC LICENSE' "$root/usr/share/licenses/libiconv/COPYING.LIB"
for library in ld-linux-armhf.so.3 libc.so.6 libm.so.6 libgcc_s.so.1 libstdc++.so.6; do
  cp -L /usr/arm-linux-gnueabihf/lib/$library "$root/lib"
done

run() { env -i PATH=/usr/bin:/bin "$@" >"$work/out" 2>&1; }
host() { run qemu-arm -L "$root" "$root/usr/bin/iplhost" --wall-clock "$@"; }
count_words() { # the words of a text in Shift_JIS
  local maps=() module
  for module in TextReader WordCount TextReport; do
    maps+=(--modulemap "$module:$root$libraries/ipl-examples/lib$module.so")
  done
  host "${maps[@]}" --module TextReport --module WordCount --module TextReader -- --charset Shift_JIS -- "$work/text"
}
alarm() { host --modulemap "AlarmClock:$root$libraries/ipl-examples/libAlarmClock.so" --module AlarmClock -- --in 1ms; }

printf 'sora umi \xe6\x97\xa5\xe6\x9c\xac sora\n' | iconv -f UTF-8 -t SHIFT_JIS >"$work/text"
count_words || failed "the host did not run"
grep -q '日本' "$work/out" || failed "the text was not read"
alarm || failed "the alarm clock did not run"
for tool in ipl-loglevel ipl-crash; do
  run qemu-arm -L "$root" "$root/usr/bin/$tool" --version || failed "$tool did not run"
done

# The root is all there is: without this library in it the kernel cannot be loaded.
mv "$root$libraries/libiconv.so.2" "$work"
host --module IPLHost && failed "libiconv.so.2 was found outside the root"
grep -q "libiconv.so.2" "$work/out" || failed "the missing library is not named"
mv "$work/libiconv.so.2" "$root$libraries"

# The device's own libVel.so comes as a package that replaces the stand-in, which goes; nothing else is changed.
device=$work/device
mkdir -p "$device/DEBIAN" "$device$libraries" "$work/system/var/lib/dpkg"/{info,updates} "$work/system/var/log"
touch "$work/system/var/lib/dpkg/status"
arm-linux-gnueabihf-g++ -std=c++17 -shared -fPIC -Wl,-soname,libVel.so "${vel_source[@]}" -o "$device$libraries/libVel.so"
printf '%s\n' 'Package: libvel-device' 'Version: 1' 'Architecture: armhf' 'Maintainer: Vendor <v@vendor.invalid>' \
  'Provides: libvel' 'Conflicts: libvel' 'Replaces: libvel-standin' 'Description: the device library' >"$device/DEBIAN/control"
dpkg-deb -b "$device" "$work/libvel-device_1_armhf.deb" >/dev/null
install_packages() {
  PATH=/usr/sbin:/usr/bin:/sbin:/bin dpkg --root="$work/system" --log=/dev/null --force-architecture --force-depends \
    --force-not-root --force-bad-path -i "$@" >"$work/out" 2>&1 || failed "dpkg does not install $*"
}
install_packages "$packages"/{libiplkernel,libiconv2,libvel-standin}_*_armhf.deb
install_packages "$work/libvel-device_1_armhf.deb"
owner=$(dpkg-query --root="$work/system" -S "$libraries/libVel.so")
[[ $owner =~ ^libvel-device(:armhf)?: ]] || failed "libVel.so belongs to $owner"
cp "$work/system$libraries/libVel.so" "$root$libraries"
alarm || failed "the alarm clock did not run with the device's library"
grep -q 'GetTimeZone_Offset' "$work/out" || failed "the device's library was not asked"
echo "An integrator's image runs."
