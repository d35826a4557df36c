// Views by anatomical name.
#pragma once

#include <string>
#include <string_view>

namespace render {

void name_view(std::string_view name, double& azimuth, double& elevation);

}  // namespace render
