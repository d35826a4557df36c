# libzox_volume.so and libzox_volume.a, and the same objects for tests and benchmarks, which look
# inside (they run every instruction set by name).
include(GNUInstallDirs)

add_library(zox_volume_objects OBJECT
  src/zox_GetSetThreads.cpp
  src/zox_GetStringStatus.cpp
  src/zox_GetVersion.cpp
  src/zox_Malloc.cpp
  src/zox_Volume_FindMax.cpp
  src/zox_Volume_FindMaxBMask.cpp
  src/zox_Volume_FindMaxCMask.cpp
  src/zox_Volume_RayCast_BDN.cpp
  src/zox_Volume_RayCast_BDT.cpp
  src/zox_Volume_RayCast_BPN.cpp
  src/zox_Volume_RayCast_BPT.cpp
  src/zox_Volume_RayCast_Bit.cpp
  src/zox_Volume_RayCast_GDN.cpp
  src/zox_Volume_RayCast_GDT.cpp
  src/zox_Volume_RayCast_GPN.cpp
  src/zox_Volume_RayCast_GPT.cpp
  src/zox_Volume_WindowLevel.cpp
  src/operations/pick.cpp
  src/operations/base.cpp
  src/operations/avx2.cpp
  src/operations/avx512.cpp)
target_include_directories(zox_volume_objects PUBLIC include PRIVATE src)
set_target_properties(zox_volume_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON
  UNITY_BUILD OFF)
# Loops must not become calls to memcpy or memmove: malloc, free and memset are all that the
# library calls.
target_compile_options(zox_volume_objects PRIVATE
  -Wall -Wextra -Wpedantic
  -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-stack-protector
  $<$<NOT:$<CONFIG:Debug>>:-O3>
  $<$<CXX_COMPILER_ID:GNU>:-fno-tree-loop-distribute-patterns>
  $<$<CXX_COMPILER_ID:Clang>:-fno-builtin-memcpy>)

# The instruction sets: optimised alike in every build type but Debug. No FMA even where the
# processor has it: a fused product would change results.
set(kernel_options $<$<NOT:$<CONFIG:Debug>>:-O3>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # g++ 12 warns of the undefined vectors inside its own AVX-512 intrinsics.
  list(APPEND kernel_options -Wno-maybe-uninitialized -Wno-uninitialized)
endif()
set(zox_base_options ${kernel_options})
set(zox_avx2_options ${kernel_options} -mavx2 -mtune=haswell)
set(zox_avx512_options ${kernel_options} -mavx512f -mavx512vl -mavx512bw -mavx512dq -mtune=icelake-server
  -mprefer-vector-width=512)
foreach(set base avx2 avx512)
  set_source_files_properties(src/operations/${set}.cpp PROPERTIES COMPILE_OPTIONS "${zox_${set}_options}")
endforeach()

add_library(zox_volume SHARED $<TARGET_OBJECTS:zox_volume_objects>)
add_library(zox_volume::zox_volume ALIAS zox_volume)
target_include_directories(zox_volume PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
# Linked by the C driver and only with what is needed, so that no C++ runtime comes in; libm
# stays though nothing of it is called. No -Bsymbolic: a preloaded allocator must replace
# __zox_Malloc and __zox_Free.
set_target_properties(zox_volume PROPERTIES LINKER_LANGUAGE C)
target_link_options(zox_volume PRIVATE
  -Wl,--version-script=${PROJECT_SOURCE_DIR}/src/zox_volume.map -Wl,--as-needed)
target_link_libraries(zox_volume PRIVATE -Wl,--push-state,--no-as-needed,-lm,--pop-state)
set_target_properties(zox_volume PROPERTIES LINK_DEPENDS ${PROJECT_SOURCE_DIR}/src/zox_volume.map)

# libzox_volume.a, for programs that want the library within themselves.
add_library(zox_volume_static STATIC $<TARGET_OBJECTS:zox_volume_objects>)
add_library(zox_volume::zox_volume_static ALIAS zox_volume_static)
set_target_properties(zox_volume_static PROPERTIES OUTPUT_NAME zox_volume)
target_include_directories(zox_volume_static INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

add_library(zox_volume_internal STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:zox_volume_objects>)
target_include_directories(zox_volume_internal PUBLIC
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
