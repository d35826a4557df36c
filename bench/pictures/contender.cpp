#include "contender.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "scans.h"

namespace bench {
namespace {

// The same voxels with every axis along the patient's: axes that run the other way are turned.
Voxels along_the_axes(const zox_test::Scene& scene) {
  Voxels voxels{"", scene.array.type, {}, {}, {}};
  std::copy_n(scene.array.size, 3, voxels.size.begin());
  for (size_t a = 0; a < 3; ++a) voxels.spacing[a] = std::abs(scene.array.axes[a][a]);
  const size_t bytes = scene.array.type == ZOX_RENDER_UINT8 ? 1 : 2;
  voxels.bytes.resize(scene.voxels.size() * bytes);
  size_t next = 0;
  const auto turned = [&](int index, int a) {
    return scene.array.axes[a][a] < 0 ? scene.array.size[a] - 1 - index : index;
  };
  for (int z = 0; z < voxels.size[2]; ++z)
    for (int y = 0; y < voxels.size[1]; ++y)
      for (int x = 0; x < voxels.size[0]; ++x, ++next) {
        const size_t from = (static_cast<size_t>(turned(z, 2)) * static_cast<size_t>(voxels.size[1]) +
                             static_cast<size_t>(turned(y, 1))) *
                                static_cast<size_t>(voxels.size[0]) +
                            static_cast<size_t>(turned(x, 0));
        const int16_t value = static_cast<int16_t>(scene.voxels[from]);
        if (bytes == 1)
          voxels.bytes[next] = static_cast<std::byte>(value);
        else
          std::memcpy(&voxels.bytes[2 * next], &value, 2);
      }
  return voxels;
}

Voxels noise() {
  Voxels voxels{"", ZOX_RENDER_UINT8, {256, 256, 256}, {1, 1, 1}, {}};
  voxels.bytes.resize(256 * 256 * 256);
  uint64_t state = 1;
  for (std::byte& voxel : voxels.bytes) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    voxel = static_cast<std::byte>(state >> 56);
  }
  return voxels;
}

void require(int status) {
  if (status == ZOX_RENDER_OK) return;
  std::fprintf(stderr, "bench_pictures: %s\n", zox_render_last_error());
  std::exit(1);
}

zox_render_volume* volume_of(const Voxels& voxels, zox_render_array& array) {
  zox_render_array_init(&array);
  array.type = voxels.type;
  for (size_t a = 0; a < 3; ++a) {
    array.size[a] = voxels.size[a];
    array.axes[a][a] = voxels.spacing[a];
  }
  array.data = voxels.bytes.data();
  zox_render_volume* volume = nullptr;
  require(zox_render_volume_create(&array, nullptr, nullptr, &volume));
  return volume;
}

class Zox : public Contender {
 public:
  Zox(const Voxels& voxels, int threads, bool skip) : skip_(skip) {
    volume_ = volume_of(voxels, array_);
    require(zox_render_pool_create(threads, &pool_));
  }
  ~Zox() override {
    zox_render_pool_destroy(pool_);
    zox_render_volume_destroy(volume_);
  }
  void draw(const Job& job) override {
    zox_render_view view = view_of(job);
    view.skip = skip_;
    image_.edge = job.edge;
    image_.pixels.resize(static_cast<size_t>(job.edge) * static_cast<size_t>(job.edge));
    zox_render_picture picture;
    zox_render_picture_init(&picture);
    picture.pixels = image_.pixels.data();
    zox_render_run run;
    zox_render_run_init(&run);
    run.pool = pool_;
    require(zox_render(volume_, &view, &run, &picture, nullptr));
  }
  Image image() const override { return image_; }

 private:
  zox_render_array array_;
  zox_render_volume* volume_ = nullptr;
  zox_render_pool* pool_ = nullptr;
  bool skip_;
  Image image_;
};

Vec vec(const double v[3]) { return {v[0], v[1], v[2]}; }

}  // namespace

Voxels read_voxels(const std::string& name) {
  Voxels voxels{name, 0, {}, {}, {}};
  if (name == "noise") voxels = noise();
  if (name == "brain")
    if (const auto brain = zox_test::read_brain()) voxels = along_the_axes(*brain);
  if (name.starts_with("head"))
    if (const auto head = zox_test::read_head())
      voxels = along_the_axes(name == "head 8 bits" ? *zox_test::head_in_8_bits(*head) : *head);
  voxels.name = name;
  return voxels;
}

long long samples_of(const Job& job) {
  zox_render_array array;
  zox_render_volume* volume = volume_of(*job.voxels, array);
  zox_render_view view = view_of(job);
  std::vector<unsigned char> pixels(static_cast<size_t>(job.edge) * static_cast<size_t>(job.edge));
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = pixels.data();
  zox_render_stats stats;
  zox_render_stats_init(&stats);
  require(zox_render(volume, &view, nullptr, &picture, &stats));
  zox_render_volume_destroy(volume);
  return stats.samples;
}

std::unique_ptr<Contender> make_zox(const Voxels& voxels, int threads, bool skip) {
  return std::make_unique<Zox>(voxels, threads, skip);
}

zox_render_view view_of(const Job& job) {
  zox_render_view view;
  zox_render_view_init(&view);
  view.width = view.height = job.edge;
  view.azimuth = job.azimuth;
  view.elevation = job.elevation;
  view.projection = job.perspective ? ZOX_RENDER_PERSPECTIVE : ZOX_RENDER_ORTHOGRAPHIC;
  view.window_center = (job.black + job.white) / 2;
  view.window_width = job.white - job.black;
  return view;
}

std::vector<Job> make_jobs(const Voxels& voxels, bool perspective, int edge,
                           const std::vector<double>& azimuths, double elevation) {
  zox_render_array array;
  zox_render_volume* volume = volume_of(voxels, array);
  double center = 0, width = 0;
  require(zox_render_default_window(volume, &center, &width));
  std::vector<Job> jobs;
  for (const double azimuth : azimuths) {
    Job job{};
    job.voxels = &voxels;
    job.perspective = perspective;
    job.edge = edge;
    job.azimuth = azimuth;
    job.elevation = elevation;
    job.black = center - width / 2;
    job.white = center + width / 2;
    const zox_render_view view = view_of(job);
    zox_render_geometry geometry;
    zox_render_geometry_init(&geometry);
    require(zox_render_view_geometry(volume, &view, &geometry));
    job.right = vec(geometry.right);
    job.up = vec(geometry.up);
    job.forward = vec(geometry.forward);
    job.center = vec(geometry.center);
    job.pixel_size = geometry.pixel_size;
    job.eye_distance = geometry.eye_distance;
    job.field_of_view = view.field_of_view;
    job.step = geometry.step;
    jobs.push_back(job);
  }
  zox_render_volume_destroy(volume);
  return jobs;
}

}  // namespace bench
