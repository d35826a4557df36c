#include "view/names.h"

#include <cctype>

#include "failure.h"

namespace render {
namespace {

struct Named {
  std::string_view name;
  double azimuth, elevation;
};

// From above and from below the face is at the top of the picture.
// From above and from below the face is up in the picture.
constexpr Named kViews[] = {
    {"anterior", 0, 0}, {"front", 0, 0},      {"coronal", 0, 0}, {"posterior", 180, 0}, {"back", 180, 0},
    {"left", 90, 0},    {"sagittal", 90, 0},  {"right", 270, 0}, {"superior", 180, 90}, {"top", 180, 90},
    {"axial", 180, 90}, {"inferior", 0, -90}, {"bottom", 0, -90}};

}  // namespace

void name_view(std::string_view name, double& azimuth, double& elevation) {
  std::string small;
  for (const char c : name) small += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const Named& view : kViews)
    if (view.name == small) {
      azimuth = view.azimuth;
      elevation = view.elevation;
      return;
    }
  reject("There is no view of the name '" + std::string(name.substr(0, 64)) + "'.");
}

}  // namespace render
