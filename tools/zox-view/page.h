// The page, embedded when the program is built.
#pragma once

#include <string_view>

namespace zox::view {

std::string_view page_text();

}  // namespace zox::view
