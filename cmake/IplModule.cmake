# SPDX-License-Identifier: Apache-2.0
# ipl_add_module(NAME SOURCE...): a module, built as its author would build it: from the public headers and
# libIPLKernel.so alone. The file is libNAME.so.
function(ipl_add_module name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE ipl_headers IPLKernel)
  # Stack traces walk through the module.
  target_compile_options(${name} PRIVATE -funwind-tables)
  # Unique symbols would keep the library in memory for ever.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(${name} PRIVATE -fno-gnu-unique)
  endif()
endfunction()
