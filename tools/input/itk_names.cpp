#include "itk_names.h"

#include <filesystem>

#include "file.h"
#include "text.h"

namespace zox::input {

std::string kind_of(const std::string& path) {
  std::filesystem::path name(path);
  if (lower(name.extension().string()) == ".gz") name.replace_extension();
  return lower(name.extension().string());
}

bool is_vtk(const std::string& head) { return head.starts_with("# vtk DataFile"); }

bool is_tiff(const std::string& head) {
  using namespace std::string_literals;
  return head.starts_with("II*\0"s) || head.starts_with("MM\0*"s) || head.starts_with("II+\0"s) ||
         head.starts_with("MM\0+"s);
}

bool is_itk_format(const std::string& path) {
  const std::string head = File(path).read(0, 16);
  const std::string kind = kind_of(path);
  return is_vtk(head) || is_tiff(head) || kind == ".gipl" || kind == ".mrc" || kind == ".rec" ||
         kind == ".pic" || kind == ".spr";
}

}  // namespace zox::input
