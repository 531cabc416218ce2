# SPDX-License-Identifier: Apache-2.0
# ipl_add_module(NAME SOURCE... [MODULES MODULE...] [UNCHECKED])
#   A module, built from the public headers and libIPLKernel.so alone: the target NAME, the file libNAME.so. The file
#   exports the three entry symbols of the module NAME and nothing else, and the build fails if one of them is missing.
#   MODULES    the modules that the file holds, if it is not the one module NAME
#   UNCHECKED  the build does not fail: for files that are wrong on purpose
# The same function serves this project and, from the installed package, every other one.
function(ipl_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module UNCHECKED "" MODULES)
  if(NOT module_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "ipl_add_module(${name}) names no source file")
  endif()
  if(NOT module_MODULES)
    set(module_MODULES ${name})
  endif()
  set(entries IPLModule_PLModule_PutKernel)
  foreach(module IN LISTS module_MODULES)
    list(APPEND entries IPLModule_${module}_ModuleLoad IPLModule_${module}_ModuleUnload)
  endforeach()

  add_library(${name} MODULE ${module_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE IPLKernel::Headers IPLKernel::IPLKernel)
  # The host has loaded the kernel library before any module: no path to it belongs into the file.
  set_target_properties(${name} PROPERTIES PREFIX lib SUFFIX .so C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON BUILD_WITH_INSTALL_RPATH ON)
  # Stack traces walk through the module. Unique symbols would keep the library in memory for ever.
  target_compile_options(${name} PRIVATE -funwind-tables
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-fno-gnu-unique>)

  set(exports "")
  foreach(entry IN LISTS entries)
    string(APPEND exports "    \"${entry}\";\n")
  endforeach()
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${name}.exports.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "{\n  global:\n@exports@  local:\n    *;\n};\n" @ONLY)
  # A module that reaches everything through the kernel object names the library too, whatever the linker's default.
  target_link_options(${name} PRIVATE LINKER:--no-as-needed LINKER:--version-script=${map})
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${map})

  if(NOT module_UNCHECKED)
    list(JOIN entries "," entries)
    add_custom_command(TARGET ${name} POST_BUILD VERBATIM
      COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DFILE=$<TARGET_FILE:${name}> -DENTRIES=${entries}
        -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/IplCheckModule.cmake)
  endif()
endfunction()
