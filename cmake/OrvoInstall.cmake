# What an installation holds: library, headers, package files for CMake and
# pkg-config, and the printers for gdb.
include(CMakePackageConfigHelpers)
set(orvo_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orvo)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/orvo-config.cmake.in orvo-config.cmake
  INSTALL_DESTINATION ${orvo_package_dir})
write_basic_package_version_file(orvo-config-version.cmake COMPATIBILITY SameMinorVersion)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(orvo_pc_libdir ${CMAKE_INSTALL_FULL_LIBDIR})
  set(orvo_pc_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  # Relative to the file itself, so that an installed tree can be moved.
  file(RELATIVE_PATH orvo_pc_up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" orvo_pc_up "${orvo_pc_up}")
  set(orvo_pc_prefix "\${pcfiledir}/${orvo_pc_up}")
  set(orvo_pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(orvo_pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
list(TRANSFORM CMAKE_DL_LIBS PREPEND " -l" OUTPUT_VARIABLE orvo_pc_dl)
configure_file(${PROJECT_SOURCE_DIR}/cmake/orvo.pc.in orvo.pc @ONLY)

install(TARGETS orvo EXPORT orvo-targets FILE_SET HEADERS)
install(EXPORT orvo-targets NAMESPACE orvo:: DESTINATION ${orvo_package_dir})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvo-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/orvo-config-version.cmake DESTINATION ${orvo_package_dir})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
add_subdirectory(gdb)
