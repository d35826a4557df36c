# What `cmake --install` puts where: the library, its headers, and the files by which CMake
# (find_package(zox_volume)) and pkg-config find them, wherever the tree is moved to.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zox_volume)

install(TARGETS zox_volume zox_volume_static EXPORT zox_volume)
install(FILES include/zox_volume.h include/zox_volume_names.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT zox_volume NAMESPACE zox_volume:: FILE zox_volume-config.cmake
  DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zox_volume-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zox_volume-config-version.cmake
  DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/zox_volume.pc.in zox_volume.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zox_volume.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET zox-mip)
  install(TARGETS zox-mip)
endif()
if(TARGET zox_volume_check)
  install(TARGETS zox_volume_check)
  install(FILES include/zox_volume_check.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
