#include "writer.h"

#include <display/marks.h>

#include <algorithm>

#include "output.h"

namespace zox_mip {

namespace output = zox::output;

Writer::Writer(const Options& options)
    : options_(options), palette_(palette_of(options.colormap)), planes_(make_planes(options)) {}

void Writer::write(const Job& job, const zox_render_geometry& geometry, const zox_render_volume_info& info) {
  write_picture(job, geometry);
  if (!job.raw_output.empty()) write_samples(job.raw_output, planes_, options_, info);
  if (!job.depth_output.empty()) write_depths(job.depth_output, planes_, options_, geometry.step);
}

// A library's pixel is 0 there, which this map shows as a value far below the others.
void Writer::darken_nothing() {
  if (options_.colormap != Colormap::kDiverging) return;
  for (size_t i = 0; i < planes_.pixels.size(); ++i)
    if (planes_.samples[i] == ZOX_RENDER_NOTHING) planes_.pixels[i] = kBlackOfDiverging;
}

void Writer::write_picture(const Job& job, const zox_render_geometry& geometry) {
  darken_nothing();
  if (options_.marks)
    zox::display::draw_marks({planes_.pixels.data(), options_.view.width, options_.view.height}, geometry);
  const output::Image image = image_of(planes_, options_, palette_);
  if (!is_animation(options_))
    return output::write_file(job.output, output::encode_png(image, options_.png_level));
  constexpr int kTurnMilliseconds = 6000;
  const int frames = options_.spin.frames;
  if (!animation_) animation_.emplace(frames, std::max(kTurnMilliseconds / frames, 20), options_.png_level);
  animation_->add(image);
  if (!job.last_of_animation) return;
  output::write_file(job.output, animation_->finish());
  animation_.reset();
}

}  // namespace zox_mip
