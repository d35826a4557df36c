# Debian packages, by scripts/packages.sh. Each install component of a tree that is configured with
# ZOX_DEBIAN is a package of that name.
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGE_NAME zox-volume)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "ZOX Volume authors <zox-volume@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# A library of ours is found in this tree; which package it is in says CPACK_DEBIAN_..._DEPENDS.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

file(WRITE ${PROJECT_BINARY_DIR}/package/triggers "activate-noawait ldconfig\n")
# What python3's tools do for any package: compile on installing, take the compiled files away on removing.
file(WRITE ${PROJECT_BINARY_DIR}/package/postinst
  "#!/bin/sh\nset -e\nif command -v py3compile >/dev/null; then py3compile -p python3-zox-volume; fi\n")
file(WRITE ${PROJECT_BINARY_DIR}/package/prerm
  "#!/bin/sh\nset -e\nif command -v py3clean >/dev/null; then py3clean -p python3-zox-volume; fi\n")
file(CHMOD ${PROJECT_BINARY_DIR}/package/postinst ${PROJECT_BINARY_DIR}/package/prerm
  PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(same "(= ${PROJECT_VERSION}-1)")

# zox_debian_package(name section "summary" "description" [DEPENDS package...] [RECOMMENDS package...] [LIBRARY]
# [ALL])
function(zox_debian_package name section summary description)
  cmake_parse_arguments(PARSE_ARGV 4 with "LIBRARY;ALL" "" "DEPENDS;RECOMMENDS")
  string(TOUPPER ${name} key)
  list(JOIN with_DEPENDS ", " depends)
  list(JOIN with_RECOMMENDS ", " recommends)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_RECOMMENDS "${recommends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  if(with_LIBRARY)
    set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/package/triggers PARENT_SCOPE)
  endif()
  if(with_ALL)
    set(CPACK_DEBIAN_${key}_PACKAGE_ARCHITECTURE all PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SHLIBDEPS OFF PARENT_SCOPE)
  endif()
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${name} PARENT_SCOPE)
  install(FILES ${PROJECT_BINARY_DIR}/package/copyright DESTINATION share/doc/${name} COMPONENT ${name})
  install(FILES ${PROJECT_BINARY_DIR}/package/changelog.Debian.gz DESTINATION share/doc/${name}
    COMPONENT ${name})
endfunction()

execute_process(COMMAND ${PROJECT_SOURCE_DIR}/cmake/debian_documents.sh
  ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/package ${PROJECT_VERSION}-1
  "${CPACK_DEBIAN_PACKAGE_MAINTAINER}" COMMAND_ERROR_IS_FATAL ANY)

zox_debian_package(libzox-volume libs "exact resampling of scalar volumes along rays"
  "The kernels under a medical or scientific viewer: rays go in, planes of samples\ncome out, the same bytes on every processor.\n.\nThis package holds the shared library." LIBRARY)
zox_debian_package(libzox-volume-dev libdevel "exact resampling of scalar volumes (development files)"
  "The kernels under a medical or scientific viewer: rays go in, planes of samples\ncome out, the same bytes on every processor.\n.\nThis package holds headers, the static library, the contract checker, the files\nfor CMake and pkg-config, and the man pages of every function."
  LIBRARY DEPENDS "libzox-volume ${same}" libc6-dev)
if(TARGET zox_render)
  zox_debian_package(libzox-render libs "whole pictures of scalar volumes, exact in every pixel"
    "Maximum and minimum intensity projections, slabs and slices of volumes,\nrendered on the processor by several threads.\n.\nThis package holds the shared library." LIBRARY
    DEPENDS "libzox-volume ${same}")
  zox_debian_package(libzox-render-dev libdevel "whole pictures of scalar volumes (development files)"
    "Maximum and minimum intensity projections, slabs and slices of volumes,\nrendered on the processor by several threads.\n.\nThis package holds the header and the files for CMake and pkg-config."
    DEPENDS "libzox-render ${same}" "libzox-volume-dev ${same}")
  set(renderer "libzox-render ${same}")
endif()
set(libraries "libzox-volume ${same}" ${renderer})
# Loaded when a file needs it.
set(loaded libhdf5-103-1)
if(TARGET zox_readers)
  zox_debian_package(zox-readers graphics "readers of DICOM, TIFF and other volumes"
    "A module that zox-mip, zox-view and zox-mip-mpi load for files in DICOM, TIFF,\nVTK and some other formats.")
  set(program_needs ${libraries} "zox-readers ${same}")
endif()
if(TARGET zox-mip)
  zox_debian_package(zox-mip graphics "renderer of maximum-intensity pictures of volumes"
    "Renders NIfTI, NRRD, MetaImage, DICOM and other volumes as maximum-intensity\npictures from the command line." DEPENDS ${program_needs}
    RECOMMENDS ${loaded})
endif()
if(TARGET zox-view)
  zox_debian_package(zox-view graphics "interactive viewer of volumes in the browser"
    "Shows NIfTI, NRRD, MetaImage, DICOM and other volumes in a browser, rendered by\nthe processor of the machine that has the data." DEPENDS ${program_needs} RECOMMENDS ${loaded})
endif()
if(TARGET zox-mip-mpi)
  zox_debian_package(zox-mip-mpi graphics "renderer of very large volumes over MPI"
    "Renders volumes larger than the memory of one machine as maximum-intensity\npictures, each process reading and casting its own part." DEPENDS ${program_needs} openmpi-bin
    RECOMMENDS ${loaded})
endif()
if(ZOX_BUILD_PYTHON_BUILT AND EXISTS ${PROJECT_SOURCE_DIR}/python/CMakeLists.txt)
  zox_debian_package(python3-zox-volume python "exact pictures of scalar volumes, from NumPy"
    "Python modules over the ZOX libraries: every operation with NumPy arrays, and\nwhole pictures of volumes." DEPENDS ${libraries} python3 "python3-numpy (>= 1:1.24)" ALL)
  set(CPACK_DEBIAN_PYTHON3-ZOX-VOLUME_PACKAGE_CONTROL_EXTRA
    "${PROJECT_BINARY_DIR}/package/postinst;${PROJECT_BINARY_DIR}/package/prerm")
endif()

if(TARGET zox_reference_pages)
  zox_debian_package(zox-volume-doc doc "exact resampling of scalar volumes (documentation)"
    "Guides, the reference of every function and examples in C, C++ and Python." ALL)
endif()

# Man pages are compressed, as everywhere in Debian.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  install(CODE "
    file(GLOB_RECURSE pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/share/man/*.[13]\")
    foreach(page IN LISTS pages)
      execute_process(COMMAND gzip -9nf \${page})
    endforeach()" COMPONENT ${component})
endforeach()

include(CPack)
