# What `cmake --install` puts where: the libraries, their headers, the files by which CMake
# (find_package) and pkg-config find them, programs, Python, documents. All of it may be moved as a
# whole. Components: runtime, development, tools, python, docs; in a tree that is configured for
# Debian's packages (ZOX_DEBIAN) they are called like the packages.
include(CMakePackageConfigHelpers)

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
set(pc_prefix "\${pcfiledir}/${prefix_from_pc}")
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
if(ZOX_DEBIAN)
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
endif()

# A library with its static twin, its headers, its CMake package and its pkg-config file.
function(zox_install_library library package)
  cmake_parse_arguments(PARSE_ARGV 2 with "" "" "HEADERS")
  zox_pick_component(runtime runtime ${package})
  zox_pick_component(development development ${package}-dev)
  set(targets ${library})
  if(TARGET ${library}_static)
    list(APPEND targets ${library}_static)
  endif()
  install(TARGETS ${targets} EXPORT ${library}
    LIBRARY COMPONENT ${runtime} ARCHIVE COMPONENT ${development})
  list(TRANSFORM with_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/)
  install(FILES ${with_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development})

  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${library})
  set(made ${PROJECT_BINARY_DIR}/package)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}-config.cmake.in
    ${made}/${library}-config.cmake @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in ${made}/${library}.pc @ONLY)
  write_basic_package_version_file(${made}/${library}-config-version.cmake
    COMPATIBILITY SameMajorVersion)
  install(EXPORT ${library} NAMESPACE ${library}:: FILE ${library}-targets.cmake
    DESTINATION ${package_dir} COMPONENT ${development})
  install(FILES ${made}/${library}-config.cmake ${made}/${library}-config-version.cmake
    DESTINATION ${package_dir} COMPONENT ${development})
  install(FILES ${made}/${library}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${development})
endfunction()

zox_install_library(zox_volume libzox-volume HEADERS zox_volume.h zox_volume_names.h
  zox_volume_layout.h)
if(TARGET zox_render)
  zox_install_library(zox_render libzox-render HEADERS zox_render.h)
  set_target_properties(zox_render PROPERTIES INSTALL_RPATH "\$ORIGIN")
endif()
if(TARGET zox_volume_check)
  zox_pick_component(development development libzox-volume-dev)
  install(TARGETS zox_volume_check LIBRARY COMPONENT ${development})
  install(FILES include/zox_volume_check.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development})
endif()

# Programs find the libraries beside themselves, wherever the tree is put.
file(RELATIVE_PATH libraries_from_programs /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
foreach(program zox-mip zox-view zox-mip-mpi)
  if(TARGET ${program})
    zox_pick_component(tools tools ${program})
    set_target_properties(${program} PROPERTIES
      INSTALL_RPATH "\$ORIGIN/${libraries_from_programs}")
    install(TARGETS ${program} RUNTIME COMPONENT ${tools})
    if(TARGET zox_man_${program})
      install(FILES ${PROJECT_BINARY_DIR}/docs/${program}.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${tools})
    endif()
  endif()
endforeach()

# What these load for the files that need it.
if(TARGET zox_readers)
  zox_pick_component(tools tools zox-readers)
  install(TARGETS zox_readers LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/zox-volume COMPONENT ${tools})
endif()

# Documents, examples, and the reference where it was made.
zox_pick_component(zox_docs docs zox-volume-doc)
zox_pick_component(zox_man docs libzox-volume-dev)
set(zox_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/zox_volume)
if(ZOX_DEBIAN)
  set(zox_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/zox-volume-doc)
endif()
install(DIRECTORY docs/ DESTINATION ${zox_doc_dir}/docs COMPONENT ${zox_docs}
  FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.svg" PATTERN man EXCLUDE)
install(FILES README.md DESTINATION ${zox_doc_dir} COMPONENT ${zox_docs})
install(FILES CHANGELOG.md DESTINATION ${zox_doc_dir}/docs COMPONENT ${zox_docs})
if(EXISTS ${PROJECT_SOURCE_DIR}/examples)
  install(DIRECTORY examples DESTINATION ${zox_doc_dir} COMPONENT ${zox_docs})
endif()
if(TARGET zox_reference_pages)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION ${zox_doc_dir} COMPONENT ${zox_docs})
  install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/man/man3/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
    COMPONENT ${zox_man} FILES_MATCHING PATTERN "zox*" PATTERN "zox_render*" EXCLUDE)
  zox_pick_component(zox_man docs libzox-render-dev)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/man/man3/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
    COMPONENT ${zox_man} FILES_MATCHING PATTERN "zox_render*")
endif()

zox_pick_component(zox_runtime runtime libzox-volume)
# A directory that the loader does not know needs a word: Debian's knows /usr/local/lib, but keeps a list.
install(CODE "
  if(\"\$ENV{DESTDIR}\" STREQUAL \"\" AND \"\${CMAKE_INSTALL_PREFIX}\" MATCHES \"^/usr(/local)?/?$\")
    message(STATUS \"Run ldconfig as root, so that programs find the libraries\")
  endif()" COMPONENT ${zox_runtime})

add_custom_target(uninstall
  COMMAND ${CMAKE_COMMAND} -DBUILD=${PROJECT_BINARY_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake)

if(ZOX_DEBIAN)
  include(cmake/packages.cmake)
endif()
