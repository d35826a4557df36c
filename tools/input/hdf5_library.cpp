#include "hdf5_library.h"

#include <dlfcn.h>

#include <cstdlib>

#include "format.h"
#include "text.h"

namespace zox::input {
namespace {

// The name behind a macro.
#define ZOX_TEXT_(name) #name
#define ZOX_TEXT(name) ZOX_TEXT_(name)

template <class Symbol>
Symbol find(void* library, const char* name, const std::string& path) {
  void* const found = dlsym(library, name);
  if (!found) refuse(quoted(path) + " cannot be read: " ZOX_HDF5_LIBRARY " here lacks " + name + ".");
  return reinterpret_cast<Symbol>(found);
}

}  // namespace

Hdf5 load_hdf5(const std::string& path) {
  void* const library = dlopen(ZOX_HDF5_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (!library)
    refuse(quoted(path) + " is HDF5, whose library " ZOX_HDF5_LIBRARY
                          " is not installed (Debian: libhdf5-103-1).");
  // A reader needs no lock, which file systems of clusters often refuse.
  setenv("HDF5_USE_FILE_LOCKING", "FALSE", 1);
  Hdf5 hdf5{};
#define ZOX_HDF5_FIND(function, member) \
  hdf5.member = find<decltype(&function)>(library, ZOX_TEXT(function), path);
  ZOX_HDF5_FUNCTIONS(ZOX_HDF5_FIND)
#undef ZOX_HDF5_FIND
  hdf5.open();
  hdf5.set_messages(H5E_DEFAULT, nullptr, nullptr);
#define ZOX_HDF5_FIND(type) hdf5.k##type = *find<hid_t*>(library, "H5T_NATIVE_" #type "_g", path);
  ZOX_HDF5_TYPES(ZOX_HDF5_FIND)
#undef ZOX_HDF5_FIND
  return hdf5;
}

}  // namespace zox::input
