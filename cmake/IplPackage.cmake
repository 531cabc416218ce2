# SPDX-License-Identifier: Apache-2.0
# What others build hosts and modules with, from the installed files alone: the CMake package, the pkg-config file, the
# toolchain file, and the kit.
include(CMakePackageConfigHelpers)

add_library(IPLKernel::IPLKernel ALIAS IPLKernel)
add_library(IPLKernel::Headers ALIAS ipl_headers)
target_compile_features(ipl_headers INTERFACE cxx_std_11)
set_target_properties(ipl_headers PROPERTIES EXPORT_NAME Headers)
target_link_libraries(IPLKernel INTERFACE ipl_headers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/IPLKernel)
install(TARGETS ipl_headers EXPORT IPLKernelTargets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT IPLKernelTargets NAMESPACE IPLKernel:: DESTINATION ${package})

configure_package_config_file(cmake/IPLKernelConfig.cmake.in IPLKernelConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(IPLKernelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/IPLKernelConfig.cmake ${CMAKE_BINARY_DIR}/IPLKernelConfigVersion.cmake
  cmake/IplModule.cmake cmake/IplCheckModule.cmake cmake/toolchain-arm.cmake DESTINATION ${package})

set(ipl_module_flags "-shared -fPIC -fvisibility=hidden -funwind-tables -fno-gnu-unique -Wl,--no-as-needed")
file(RELATIVE_PATH ipl_prefix_of_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ipl_prefix_of_pc ${ipl_prefix_of_pc})
configure_file(cmake/iplkernel.pc.in iplkernel.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/iplkernel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The kit is a part of what is installed, so it is made from an installation.
add_custom_target(kit
  COMMAND ${CMAKE_COMMAND} -E rm -rf kit
  COMMAND ${CMAKE_COMMAND} --install . --prefix kit
  COMMAND ${CMAKE_SOURCE_DIR}/tools/make-kit kit ipl-kit-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR}.tar.gz
  WORKING_DIRECTORY ${CMAKE_BINARY_DIR} DEPENDS product VERBATIM)
