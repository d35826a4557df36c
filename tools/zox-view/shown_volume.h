// A scan that views look at, and what the renderer made of it.
#pragma once

#include <zox_render.h>

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "../input/scan.h"

namespace zox::view {

struct DestroyVolume {
  void operator()(zox_render_volume* volume) const { zox_render_volume_destroy(volume); }
};
struct DestroyPool {
  void operator()(zox_render_pool* pool) const { zox_render_pool_destroy(pool); }
};
using Pool = std::unique_ptr<zox_render_pool, DestroyPool>;

class Volume {
 public:
  // Throws Refusal.
  Volume(const std::string& name, input::Scan scan, zox_render_pool* pool);

  // The volume in a layout (ZOX_RENDER_AUTO ...), made when it is first asked for. Throws Refusal.
  const zox_render_volume* in(int32_t layout);
  // What the page is told of it: JSON.
  const std::string& description() const { return description_; }
  // Where the middle of a voxel is, in millimetres.
  void position_of(const int32_t (&voxel)[3], double (&position)[3]) const;

 private:
  std::string describe(const std::string& name);

  input::Scan scan_;
  zox_render_pool* pool_;
  std::mutex making_;
  std::unique_ptr<zox_render_volume, DestroyVolume> made_[3];
  std::string description_;
};

// The volumes that somebody looks at, and the one that was asked for last.
class Volumes {
 public:
  using Make = std::function<std::shared_ptr<Volume>(const std::string& name)>;
  explicit Volumes(Make make) : make_(std::move(make)) {}

  // Waits until it is made, once for all who ask. Throws what making throws; the next one tries again.
  std::shared_ptr<Volume> get(const std::string& name);

 private:
  Make make_;
  std::mutex mutex_;
  std::list<std::pair<std::string, std::weak_ptr<Volume>>> known_;
  std::shared_ptr<Volume> last_;
};

}  // namespace zox::view
