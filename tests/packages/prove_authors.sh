#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# prove_authors.sh PACKAGES VERSION armhf|amd64: what authors of hosts and of modules do, with the packages unpacked into a
# folder that is then moved, and with the kit. Nothing comes from the source tree or a build.
set -euo pipefail
packages=$(realpath "$1") version=$2 architecture=$3
case $architecture in
  armhf) triplet=arm-linux-gnueabihf compiler=$triplet-g++ emulator=(qemu-arm -L /usr/$triplet) ;;
  amd64) triplet=x86_64-linux-gnu compiler=g++ emulator=() ;;
esac
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
trap 'echo "prove_authors: line $LINENO fails for $architecture" >&2; [ ! -e log ] || cat log >&2' ERR

for package in libiplkernel libiconv2 libvel-standin libiplkernel-dev iplkernel-tools; do
  dpkg-deb -x "$packages/${package}"_*_"$architecture.deb" first
done
mv first moved
prefix=$work/moved/usr libraries=$work/moved/usr/lib/$triplet
env=(env -i PATH=/usr/bin:/bin CMAKE_GENERATOR=Ninja "CXX=$compiler" "PKG_CONFIG_LIBDIR=$libraries/pkgconfig")

build() { # PREFIX FOLDER
  local find=-DCMAKE_PREFIX_PATH=$1
  [ $architecture = amd64 ] || find=-DCMAKE_TOOLCHAIN_FILE=$1/lib/$triplet/cmake/IPLKernel/toolchain-arm.cmake
  { "${env[@]}" cmake -S "$2" -B "$2/build" "$find" && "${env[@]}" cmake --build "$2/build"; } >log 2>&1
}
run() { env -i PATH=/usr/bin:/bin "LD_LIBRARY_PATH=$libraries" "${emulator[@]}" "$@"; }
greets() { # LIBRARY
  run "$prefix/bin/iplhost" --modulemap "Greeter:$1" --module Greeter -- you >log
  grep -q '^Hello, you, from Greeter$' log
}

# A host of one file, with the CMake package and with pkg-config.
mkdir host
cat >host/CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
foreach(missing 99.0 "COMPONENTS;Nonsense")
  find_package(IPLKernel \${missing} QUIET)
  if(IPLKernel_FOUND)
    message(FATAL_ERROR "IPLKernel \${missing} was found")
  endif()
endforeach()
find_package(IPLKernel $version REQUIRED COMPONENTS Kernel Module Host)
add_executable(host host.cpp)
target_link_libraries(host PRIVATE IPLKernel::IPLKernel)
END
cat >host/host.cpp <<'END'
#include <ipl/KernelEntry.h>
int main(int argc, char** argv) {
  IPLModule* kernel = IPLModule_IPLKernel_LoadModule();
  IPLModule_IPLKernel_InitializeKernel(argc, const_cast<const char**>(argv));
  IPLModule_IPLKernel_UnloadModule(kernel);
}
END
build "$prefix" host
run host/build/host
"${env[@]}" "$compiler" host/host.cpp $("${env[@]}" pkg-config --cflags --libs "iplkernel = $version") -o other
run ./other

# What ipl-new-module refuses, then its project, which is built and tested.
new=$prefix/bin/ipl-new-module
while read -r status arguments; do
  "$new" $arguments >log 2>&1 && code=0 || code=$?
  [ "$code" = "$status" ] && [ ! -e refused ]
done <<<"0 $(printf 'a%.0s' {1..47}) longest
0 -- _9 low
2 $(printf 'a%.0s' {1..48}) refused
2 9a refused
2 a-b refused
2 Größe refused
2 install refused
2 A refused B
2 --bogus refused
1 A host
1 A missing/refused"
"$new" Greeter greeter >/dev/null
# Its README names the folder that the packages have.
toolchain=$(grep -o 'PREFIX/lib/arm-linux[^`]*' greeter/README.md | head -n 1)
[ $architecture = amd64 ] || [ -e "${toolchain/PREFIX/$prefix}/toolchain-arm.cmake" ]
# The compiler exports this one, as unique, unless it is kept from that.
cat >>greeter/Greeter.cpp <<'END'
template <typename T> __attribute__((visibility("default"))) T* Shared() { static T shared; return &shared; }
template int* Shared<int>();
END
build "$prefix" greeter
"${env[@]}" ctest --test-dir greeter/build --no-tests=error --output-on-failure >log 2>&1
library=greeter/build/libGreeter.so
diff <(nm -D --defined-only $library | sed 's/^[^ ]* //' | sort) \
  <(printf 'T IPLModule_%s\n' Greeter_ModuleLoad Greeter_ModuleUnload PLModule_PutKernel)
if nm $library | grep ' u '; then false; fi

# It will load, says the tool that asks, and its traces have frames, whatever the project's own flags are.
if [ $architecture = amd64 ]; then
  sed -i '/^find_package/i set(CMAKE_CXX_FLAGS "-fno-exceptions -fno-asynchronous-unwind-tables")' greeter/CMakeLists.txt
  build "$prefix" greeter
  dpkg-deb -x "$packages"/iplmod_*_amd64.deb tool
  cp -r moved root
  cp -L /usr/lib/$triplet/{libc.so.6,libm.so.6,libgcc_s.so.1,libstdc++.so.6,ld-linux-x86-64.so.2} root/usr/lib/$triplet
  tool/usr/bin/iplmod check $library --sysroot root >log
  if grep no-unwind-tables log; then false; fi
fi

# Without its entry symbols nothing is built, at the second try neither. The file needs the kernel though it uses none.
cat >greeter/Greeter.cpp <<'END'
extern "C" __attribute__((visibility("default"))) void IPLModule_PLModule_PutKernel(void*) {}
extern "C" void IPLModule_Greeter_ModuleUnload(void*) {}
void* IPLModule_Greeter_ModuleLoad() { return nullptr; }
END
if build "$prefix" greeter || build "$prefix" greeter; then false; fi
[ "$(readelf -d $library | grep -cE '\[libIPLKernel.so\]|RPATH|RUNPATH')" = 1 ]
grep -q ' IPLModule_Greeter_ModuleUnload: defined, but not an exported function$' log
grep -q ' IPLModule_Greeter_ModuleLoad: defined as a C++ function, not as extern "C"$' log
if grep 'PutKernel:' log; then false; fi

# The kit, alone in a folder: its file of flags, and its CMake package.
tar --one-top-level=kit -xzf "$packages/ipl-kit-$version-$architecture.tar.gz"
rm -r "$prefix/include" "$libraries/cmake" "$libraries/pkgconfig"
cd kit
"$new" Greeter greeter >/dev/null
"${env[@]}" "$compiler" -Wall -Wextra -Wpedantic -Wshadow -Werror @flags greeter/Greeter.cpp -o libGreeter.so
greets libGreeter.so
build "$PWD" greeter
greets greeter/build/libGreeter.so
echo "Authors of hosts and modules can work: $architecture."
