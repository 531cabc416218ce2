# SPDX-License-Identifier: Apache-2.0
# 32-bit ARM Linux, with Debian's cross compiler; programs run under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
# Installed, this file lies in the CMake package: what was installed with it is found too, wherever that is moved.
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/IPLKernelConfig.cmake)
  string(REGEX REPLACE "/[^/]+(/[^/]+-linux-[^/]+)?/cmake/IPLKernel$" "" ipl_prefix ${CMAKE_CURRENT_LIST_DIR})
  list(APPEND CMAKE_FIND_ROOT_PATH ${ipl_prefix})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
