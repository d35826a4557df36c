// Pictures into the files that a command line names for them.
#pragma once

#include <optional>

#include "jobs.h"
#include "planes.h"

namespace zox_mip {

class Writer {
 public:
  explicit Writer(const Options& options);

  // Where the next picture is drawn.
  Planes& planes() { return planes_; }
  // Writes what was drawn; the frames of an animation when the last has come.
  void write(const Job& job, const zox_render_geometry& geometry, const zox_render_volume_info& info);

 private:
  void darken_nothing();
  void write_picture(const Job& job, const zox_render_geometry& geometry);

  const Options& options_;
  zox::output::Palette palette_;
  Planes planes_;
  std::optional<zox::output::Animation> animation_;
};

}  // namespace zox_mip
