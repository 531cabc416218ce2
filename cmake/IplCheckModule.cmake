# SPDX-License-Identifier: Apache-2.0
# cmake -DNM=NM -DFILE=FILE -DENTRIES=SYMBOL,... -P IplCheckModule.cmake: fails, and says why, unless the module FILE
# exports each of the entry symbols.
execute_process(COMMAND ${NM} -D --defined-only ${FILE} OUTPUT_VARIABLE exported RESULT_VARIABLE status)
execute_process(COMMAND ${NM} ${FILE} OUTPUT_VARIABLE all ERROR_QUIET)
if(NOT status STREQUAL "0")
  message(FATAL_ERROR "'${NM}' cannot read ${FILE}: ${status}")
endif()

string(REPLACE "," ";" ENTRIES "${ENTRIES}")
set(mistakes)
foreach(entry IN LISTS ENTRIES)
  if(exported MATCHES " T ${entry}\n")
    continue()
  endif()
  set(reason "not defined")
  if(all MATCHES "_Z[0-9]+${entry}")
    set(reason "defined as a C++ function, not as extern \"C\"")
  elseif(all MATCHES " [A-Za-z] ${entry}\n")
    set(reason "defined, but not an exported function")
  endif()
  string(APPEND mistakes "\n  ${entry}: ${reason}")
endforeach()
if(mistakes)
  message(FATAL_ERROR "${FILE} lacks entry symbols of a module:${mistakes}\n"
    "IPL_MODULE (ipl/ModuleEntry.h) defines them; IPL_DECLARE_MODULE (ipl/IPLModule.h) declares them. "
    "The name given there is the one given to ipl_add_module.")
endif()
