// The pages of a TIFF file, each of which says where the next begins.
#pragma once

#include <string>

namespace zox::input {

// Throws Failure where the file ends before the last page's directory: the library that reads TIFF files
// takes the pages before it for all.
void check_tiff_pages(const std::string& path);

}  // namespace zox::input
