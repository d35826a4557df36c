#include "colormap.h"

#include <span>

namespace zox_mip {
namespace {

// Straight lines of red, green and blue between some greys.
struct Stop {
  int grey;
  int colour[3];
};
constexpr Stop kInverseStops[] = {{0, {255, 255, 255}}, {255, {0, 0, 0}}};
constexpr Stop kHotStops[] = {
    {0, {0, 0, 0}}, {95, {255, 0, 0}}, {191, {255, 255, 0}}, {255, {255, 255, 255}}};
// What lies in the middle of the window is black: negative values are blue, positive ones red.
constexpr Stop kDivergingStops[] = {{0, {160, 240, 255}},
                                    {64, {30, 90, 255}},
                                    {kBlackOfDiverging, {0, 0, 0}},
                                    {192, {255, 60, 30}},
                                    {255, {255, 240, 150}}};
constexpr Stop kGrayStops[] = {{0, {0, 0, 0}}, {255, {255, 255, 255}}};

std::span<const Stop> stops_of(Colormap colormap) {
  switch (colormap) {
    case Colormap::kInverse:
      return kInverseStops;
    case Colormap::kHot:
      return kHotStops;
    case Colormap::kDiverging:
      return kDivergingStops;
    default:
      return kGrayStops;
  }
}

}  // namespace

const std::map<std::string, Colormap> kColormaps = {{"gray", Colormap::kGray},
                                                    {"inverse", Colormap::kInverse},
                                                    {"hot", Colormap::kHot},
                                                    {"diverging", Colormap::kDiverging}};

zox::output::Palette palette_of(Colormap colormap) {
  zox::output::Palette palette{};
  const std::span<const Stop> stops = stops_of(colormap);
  for (size_t i = 0; i + 1 < stops.size(); ++i) {
    const Stop& a = stops[i];
    const Stop& b = stops[i + 1];
    for (int grey = a.grey; grey <= b.grey; ++grey)
      for (size_t part = 0; part < 3; ++part)
        palette[static_cast<size_t>(grey)][part] = static_cast<uint8_t>(
            a.colour[part] + (b.colour[part] - a.colour[part]) * (grey - a.grey) / (b.grey - a.grey));
  }
  return palette;
}

}  // namespace zox_mip
