// The picture of a volume, part by part: the same bytes as the whole gives.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "measure.h"

namespace zox::parts {

struct Settings {
  zox_render_view view;
  zox_render_volume_options options;
  zox_render_run run;
  bool depths = false;
};

// What parts add up to. All of it can be added in any order.
struct Picture {
  std::vector<int16_t> samples;
  std::vector<int32_t> depths;                    // empty where they are not wanted
  std::vector<uint64_t> counts;                   // 65536, of samples -32768 on
  double sample_slope = 0, sample_intercept = 0;  // 0: no part has been added
  int64_t samples_asked = 0, samples_cast = 0;
  uint64_t most_part_bytes = 0;
};

// Bytes that a part takes for a voxel: a sample of 16 bits, its share of the bounds, and the voxel as it is
// in the file.
uint64_t bytes_a_voxel(const zox_render_array& array);

Picture empty_picture(const Settings& settings);

// A part, ready to be rendered. Throws input::Failure with a sentence that names the source.
class PartVolume {
 public:
  PartVolume(const Source& source, const Measure& whole, const Part& part, const Settings& settings);
  void add_to(Picture& picture, const Settings& settings) const;
  zox_render_volume* handle() const { return volume_.get(); }

 private:
  struct Destroy {
    void operator()(zox_render_volume* volume) const { zox_render_volume_destroy(volume); }
  };
  std::string name_;
  PartArray taken_;
  std::unique_ptr<zox_render_volume, Destroy> volume_;
};

// The first voxels of a volume, as its lowest value: it knows where views look and what samples mean as the
// whole does.
std::unique_ptr<PartVolume> corner(const Source& source, const Measure& whole, const Settings& settings);

// Adds another worker's picture. One to which no part was added changes nothing.
void add_picture(const Settings& settings, const Picture& other, Picture& picture);

// Display bytes; the view's window, or the default one of the counts where it has none.
// It is told.
std::vector<uint8_t> display(const Settings& settings, const Picture& picture, double& window_center,
                             double& window_width);

}  // namespace zox::parts
