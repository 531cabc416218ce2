# SPDX-License-Identifier: Apache-2.0
# How all code of this project is compiled.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
option(IPL_WERROR "Treat warnings as errors" OFF)
if(IPL_WERROR)
  add_compile_options(-Werror)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
endif()

# 64-bit time on 32-bit systems; without effect on others.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)

# Unwind tables, so that stack traces walk through this code on every target.
add_compile_options(-funwind-tables)

# The paths of the build stay out of what is installed.
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)

if(IPL_SANITIZE)
  # Little optimisation: it is quicker to build, and reports name the lines that were written.
  add_compile_options(-fsanitize=${IPL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -O1 -g1)
  add_link_options(-fsanitize=${IPL_SANITIZE})
endif()

# Undefined symbols are found when a library is linked, except where a sanitizer brings them at run time.
if(NOT IPL_SANITIZE)
  add_link_options(LINKER:-z,defs)
endif()
