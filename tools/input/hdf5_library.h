// What is used of the HDF5 library, found by name when it is loaded: it brings twenty libraries of its own,
// whose start takes longer than rendering a small picture.
#pragma once

#include <hdf5.h>

#include <string>

namespace zox::input {

// By the header's own names, behind which versions stand: H5Dopen is H5Dopen2.
#define ZOX_HDF5_FUNCTIONS(USE)               \
  USE(H5open, open)                           \
  USE(H5Eset_auto, set_messages)              \
  USE(H5Fopen, open_file)                     \
  USE(H5Lexists, has_link)                    \
  USE(H5Ovisit, visit)                        \
  USE(H5Dopen, open_dataset)                  \
  USE(H5Dclose, close_dataset)                \
  USE(H5Dget_space, space_of)                 \
  USE(H5Dget_type, type_of)                   \
  USE(H5Dget_create_plist, properties_of)     \
  USE(H5Dread, read)                          \
  USE(H5Sget_simple_extent_ndims, dimensions) \
  USE(H5Sget_simple_extent_dims, sizes)       \
  USE(H5Sget_simple_extent_npoints, points)   \
  USE(H5Screate_simple, make_space)           \
  USE(H5Sselect_hyperslab, select)            \
  USE(H5Tget_class, class_of)                 \
  USE(H5Tget_size, type_size)                 \
  USE(H5Tget_sign, sign_of)                   \
  USE(H5Pget_nfilters, filters)               \
  USE(H5Pget_filter, filter)                  \
  USE(H5Zfilter_avail, has_filter)            \
  USE(H5Aexists, has_attribute)               \
  USE(H5Aopen, open_attribute)                \
  USE(H5Aget_space, attribute_space)          \
  USE(H5Aread, read_attribute)
#define ZOX_HDF5_TYPES(USE) \
  USE(UINT8) USE(INT8) USE(UINT16) USE(INT16) USE(UINT32) USE(INT32) USE(FLOAT) USE(DOUBLE)

struct Hdf5 {
#define ZOX_HDF5_MEMBER(function, member) decltype(&function) member;
  ZOX_HDF5_FUNCTIONS(ZOX_HDF5_MEMBER)
#undef ZOX_HDF5_MEMBER
#define ZOX_HDF5_MEMBER(type) hid_t k##type;  // in memory
  ZOX_HDF5_TYPES(ZOX_HDF5_MEMBER)
#undef ZOX_HDF5_MEMBER
};

// Throws Failure that names the file where the library is not installed.
Hdf5 load_hdf5(const std::string& path);

}  // namespace zox::input
