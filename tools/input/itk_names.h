// Which files ITK reads, by their names and first bytes.
#pragma once

#include <string>

namespace zox::input {

// The extension without a .gz behind it, in small letters.
std::string kind_of(const std::string& path);

bool is_vtk(const std::string& head);
bool is_tiff(const std::string& head);
bool is_itk_format(const std::string& path);

}  // namespace zox::input
