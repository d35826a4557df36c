// What the command line asks for.
#pragma once

#include <optional>
#include <string>

namespace zox_mip {

enum class Projection { kPerspective, kOrthographic };
enum class Interpolation { kNearest, kTrilinear };
enum class Layout { kBlocked, kStack };

// Where the viewer stands, in degrees: azimuth 0 in front of the face, 90 at the patient's left;
// elevation 90 above the head. The picture's upward direction is that of growing elevation.
struct View {
  double azimuth = 0;
  double elevation = 0;
};

struct Window {
  double center;
  double width;
};

struct DepthRange {
  double near;
  double far;
};

struct Options {
  std::string input;  // empty: the phantom
  std::string output;
  View view;
  Projection projection = Projection::kPerspective;
  Interpolation interpolation = Interpolation::kTrilinear;
  Layout layout = Layout::kBlocked;
  int width = 512;
  int height = 512;
  double step = 0.5;                      // in voxels: times the smallest spacing
  std::optional<Window> window;           // in values of the file
  std::optional<DepthRange> depth_range;  // millimetres along the ray, from the middle of the volume
  int threads = 1;
  bool quiet = false;
};

// Throws Failure on a bad command line. Empty when the command line only asked for --help or
// --version, which has then been printed.
std::optional<Options> parse_options(int argc, const char* const* argv);

}  // namespace zox_mip
