#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_kit.sh SOURCE BUILD VERSION COMPILER [EMULATOR...]: what authors of hosts and modules do, from an installation
# that was moved, in a folder outside of the source tree and the build.
set -euxo pipefail
source=$1 build=$2 version=$3 compiler=$(basename "$4") emulator=("${@:5}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
env=(env -i PATH=/usr/bin:/bin CMAKE_GENERATOR=Ninja "CXX=$compiler" "PKG_CONFIG_LIBDIR=$work/ipl/lib/pkgconfig")

build() { # PREFIX FOLDER
  local find=-DCMAKE_PREFIX_PATH=$1
  [ ${#emulator[@]} -eq 0 ] || find=-DCMAKE_TOOLCHAIN_FILE=$1/lib/cmake/IPLKernel/toolchain-arm.cmake
  { "${env[@]}" cmake -S "$2" -B "$2/build" "$find" && "${env[@]}" cmake --build "$2/build"; } 2>&1 | tee log
}
greets() { # LIBRARY
  "${emulator[@]}" "$work/ipl/bin/iplhost" --modulemap "Greeter:$1" --module Greeter -- you | grep '^Hello, you, from Greeter$'
}

cmake --install "$build" --prefix "$work/first" >/dev/null
mv first ipl
if grep -rIlE "$source|$build|$work/first" ipl; then exit 1; fi

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
build "$work/ipl" host
"${emulator[@]}" host/build/host
"${env[@]}" "$compiler" host/host.cpp $("${env[@]}" pkg-config --cflags --libs "iplkernel = $version") -o other
LD_LIBRARY_PATH=ipl/lib "${emulator[@]}" ./other

# What ipl-new-module refuses, then its project, which is built and tested.
new=$work/ipl/bin/ipl-new-module
while read -r status arguments; do
  "$new" $arguments && code=0 || code=$?
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
# The compiler exports this one, as unique, unless it is kept from that.
cat >>greeter/Greeter.cpp <<'END'
template <typename T> __attribute__((visibility("default"))) T* Shared() { static T shared; return &shared; }
template int* Shared<int>();
END
build "$work/ipl" greeter
"${env[@]}" ctest --test-dir greeter/build --no-tests=error --output-on-failure
library=greeter/build/libGreeter.so
diff <(nm -D --defined-only $library | sed 's/^[^ ]* //' | sort) \
  <(printf 'T IPLModule_%s\n' Greeter_ModuleLoad Greeter_ModuleUnload PLModule_PutKernel)
if nm $library | grep ' u '; then exit 1; fi

# Without its entry symbols nothing is built, at the second try neither. The file needs the kernel though it uses none.
cat >greeter/Greeter.cpp <<'END'
extern "C" __attribute__((visibility("default"))) void IPLModule_PLModule_PutKernel(void*) {}
extern "C" void IPLModule_Greeter_ModuleUnload(void*) {}
void* IPLModule_Greeter_ModuleLoad() { return nullptr; }
END
if build "$work/ipl" greeter || build "$work/ipl" greeter; then exit 1; fi
[ "$(readelf -d $library | grep -cE '\[libIPLKernel.so\]|RPATH|RUNPATH')" = 1 ]
grep -q ' IPLModule_Greeter_ModuleUnload: defined, but not an exported function$' log
grep -q ' IPLModule_Greeter_ModuleLoad: defined as a C++ function, not as extern "C"$' log
if grep 'PutKernel:' log; then exit 1; fi

# The kit, alone in a folder: its file of flags, and its CMake package.
"$source/tools/make-kit" ipl kit.tar.gz
tar --one-top-level=kit -xzf kit.tar.gz
touch ipl/include/ipl/*
"$source/tools/make-kit" "$work/ipl" again.tar.gz
cmp kit.tar.gz again.tar.gz
rm -r ipl/include ipl/lib/cmake ipl/lib/pkgconfig
cd kit
"$new" Greeter greeter >/dev/null
"${env[@]}" "$compiler" -Wall -Wextra -Wpedantic -Wshadow -Werror @flags greeter/Greeter.cpp -o libGreeter.so
greets libGreeter.so
build "$PWD" greeter
greets greeter/build/libGreeter.so
