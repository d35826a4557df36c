#include "readers.h"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>

#include "dicom/dicom_frame.h"
#include "text.h"

namespace zox::input {
namespace fs = std::filesystem;
namespace {

// Beside the program where it was built, in a directory of the libraries where it was installed.
fs::path module_file() {
  std::error_code error;
  const fs::path programs = fs::read_symlink("/proc/self/exe", error).parent_path();
  const fs::path built = programs / ZOX_READERS_FILE;
  return fs::exists(built, error) ? built : programs / ZOX_READERS_FROM_PROGRAMS / ZOX_READERS_FILE;
}

}  // namespace

const Readers& readers_for(const std::string& path) {
  void* const module = dlopen(module_file().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module)
    refuse(quoted(path) + " cannot be read: the readers of its format could not be loaded (" +
           printable(dlerror()) + ").");
  const auto readers = reinterpret_cast<decltype(&zox_readers)>(dlsym(module, "zox_readers"));
  if (!readers || std::strcmp(readers()->version, ZOX_VERSION) != 0)
    refuse(quoted(path) + " cannot be read: " + quoted(module_file().string()) +
           " belongs to another version than this program.");
  return *readers();
}

bool is_dicom(const std::string& path) { return fs::is_directory(path) || dicom::looks_like_dicom(path); }

}  // namespace zox::input
