#!/usr/bin/env bash
# As a part of another project only the libraries are built, into folders of their own; nothing of the
# parent's is changed and nothing is installed with it. Programs, where they are asked for, come to lie beside
# what they load.
# Usage: subproject.sh SOURCE_DIRECTORY [tools]
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
mkdir "$scratch/parent"
cp "$here/consumer/main.c" "$scratch/parent/"
cat >"$scratch/parent/CMakeLists.txt" <<PARENT
cmake_minimum_required(VERSION 3.22)
project(parent LANGUAGES C)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY \${CMAKE_BINARY_DIR}/programs)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY \${CMAKE_BINARY_DIR}/libraries)
set(before "\${CMAKE_BUILD_TYPE}|\${CMAKE_RUNTIME_OUTPUT_DIRECTORY}|\${CMAKE_C_FLAGS}|\${CMAKE_C_STANDARD}")
include(FetchContent)
FetchContent_Declare(zox_volume SOURCE_DIR $1)
FetchContent_MakeAvailable(zox_volume)
set(after "\${CMAKE_BUILD_TYPE}|\${CMAKE_RUNTIME_OUTPUT_DIRECTORY}|\${CMAKE_C_FLAGS}|\${CMAKE_C_STANDARD}")
if(NOT before STREQUAL after)
  message(FATAL_ERROR "The settings of the parent were \${before} and are \${after}")
endif()
foreach(target zox_volume_check zox-mip zox-view zox-mip-mpi)
  if(TARGET \${target})
    message(FATAL_ERROR "\${target} would be built")
  endif()
endforeach()
add_executable(consumer main.c)
target_link_libraries(consumer PRIVATE zox_volume::zox_volume)
add_executable(consumer_static main.c)
target_link_libraries(consumer_static PRIVATE zox_volume::zox_volume_static)
install(TARGETS consumer)
PARENT
run cmake -S "$scratch/parent" -B "$scratch/build"
if grep -q 'ZOX Volume' "$log"; then complain "the table of components is printed into the parent's output"; fi
grep -q '^CMAKE_BUILD_TYPE:STRING=$' "$scratch/build/CMakeCache.txt" || complain "the parent's build type was changed"
# As Debug the kernels compile in no time.
run cmake -DCMAKE_BUILD_TYPE=Debug "$scratch/build"
run cmake --build "$scratch/build" --target consumer consumer_static
run "$scratch/build/programs/consumer"
run "$scratch/build/programs/consumer_static"
run cmake --install "$scratch/build" --prefix "$scratch/prefix"
installed=$(cd "$scratch/prefix" && find . -type f)
[ "$installed" = ./bin/consumer ] || complain "with the parent there was installed: $installed"

[ -n "${2-}" ] || exit 0
for folder in "" "\${CMAKE_BINARY_DIR}/programs"; do
  cat >"$scratch/parent/CMakeLists.txt" <<PARENT
cmake_minimum_required(VERSION 3.22)
project(parent LANGUAGES C)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY $folder)
set(ZOX_BUILD_TOOLS ON)
set(ZOX_BUILD_VIEWER AUTO)
set(ZOX_BUILD_MPI AUTO)
include(FetchContent)
FetchContent_Declare(zox_volume SOURCE_DIR $1)
FetchContent_MakeAvailable(zox_volume)
foreach(program zox-mip zox-view zox-mip-mpi)
  if(TARGET \${program})
    file(GENERATE OUTPUT \${program}.place
      CONTENT "\$<TARGET_FILE_DIR:\${program}> \$<TARGET_FILE_DIR:zox_readers>\n")
  endif()
endforeach()
PARENT
  rm -rf "$scratch/build"
  run cmake -S "$scratch/parent" -B "$scratch/build"
  for place in "$scratch"/build/*.place; do
    read -r program readers <"$place"
    [ "$program" = "$readers" ] || complain "$(basename "$place" .place) is in $program, its readers in $readers"
  done
done
