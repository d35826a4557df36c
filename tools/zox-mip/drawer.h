// What draws views of a volume: the whole of it, or part after part where memory holds no more.
#pragma once

#include <input/scan.h>

#include <memory>

#include "options.h"
#include "planes.h"

namespace zox_mip {

class Drawer {
 public:
  virtual ~Drawer() = default;
  // Draws into the planes. Throws Failure.
  virtual zox_render_stats draw(const zox_render_view& view, Planes& planes) = 0;
  // Answers for the whole volume, and knows where views look.
  virtual zox_render_volume_info info() const = 0;
  virtual const zox_render_volume* geometry() const = 0;
};

// The scan must outlive the drawer.
std::unique_ptr<Drawer> whole_drawer(const zox::input::Scan& scan, const Options& options,
                                     const zox_render_run& run, const std::string& name);

// Takes no more than options.memory bytes for voxels, and one part from the file at a time.
std::unique_ptr<Drawer> parts_drawer(zox::input::Scan scan, const Options& options, const zox_render_run& run,
                                     const std::string& name);

// "The view holds no sample", as a Failure.
[[noreturn]] void refuse_empty(const zox_render_view& view, const std::string& name);

}  // namespace zox_mip
