#include "library.h"

#include <algorithm>
#include <limits>

#include "expectation.h"

namespace zox_test {

zox_render_volume_options options_of(int layout, int precision) {
  zox_render_volume_options options;
  zox_render_volume_options_init(&options);
  options.layout = layout;
  options.precision = precision;
  return options;
}

Volume make_volume(const Scene& scene, const zox_render_volume_options& options) {
  zox_render_volume* volume = nullptr;
  const int status = zox_render_volume_create(&scene.array, &options, nullptr, &volume);
  EXPECT_EQ(status, ZOX_RENDER_OK) << zox_render_last_error();
  return Volume(status == ZOX_RENDER_OK ? volume : nullptr);
}

Volume make_volume(const Scene& scene, int layout, int precision) {
  return make_volume(scene, options_of(layout, precision));
}

Pool make_pool(int threads) {
  zox_render_pool* pool = nullptr;
  EXPECT_EQ(zox_render_pool_create(threads, &pool), ZOX_RENDER_OK) << zox_render_last_error();
  return Pool(pool);
}

zox_render_volume_info info_of(const Volume& volume) {
  zox_render_volume_info info;
  zox_render_volume_info_init(&info);
  EXPECT_EQ(zox_render_volume_get_info(volume.get(), &info), ZOX_RENDER_OK) << zox_render_last_error();
  return info;
}

zox_render_geometry geometry_of(const Volume& volume, const zox_render_view& view) {
  zox_render_geometry geometry;
  zox_render_geometry_init(&geometry);
  EXPECT_EQ(zox_render_view_geometry(volume.get(), &view, &geometry), ZOX_RENDER_OK)
      << zox_render_last_error();
  return geometry;
}

namespace {

template <class Plane>
std::string first_difference(const char* name, const Plane& one, const Plane& other) {
  size_t count = 0, first = 0;
  for (size_t i = one.size(); i-- > 0;)
    if (one[i] != other[i]) ++count, first = i;
  if (count == 0) return "";
  return std::string(name) + " of " + std::to_string(count) + " pixels, first pixel " +
         std::to_string(first) + ": " + std::to_string(one[first]) + " and " + std::to_string(other[first]) +
         "; ";
}

}  // namespace

std::string difference(const Picture& one, const Picture& other) {
  if (one.status != other.status)
    return "statuses " + std::to_string(one.status) + " and " + std::to_string(other.status);
  return first_difference("samples", one.samples, other.samples) +
         first_difference("depths", one.depths, other.depths) +
         first_difference("bytes", one.pixels, other.pixels);
}

Picture render(const Volume& volume, const zox_render_view& view, const zox_render_run* run) {
  Picture picture;
  const size_t count = static_cast<size_t>(view.width) * static_cast<size_t>(view.height);
  picture.pixels.assign(count, 0x5A);
  picture.samples.assign(count, 0x5A5A);
  picture.depths.assign(count, 0x5A5A5A5A);
  zox_render_picture planes;
  zox_render_picture_init(&planes);
  planes.pixels = picture.pixels.data();
  planes.samples = picture.samples.data();
  if (view.reduction != ZOX_RENDER_MEAN) planes.depths = picture.depths.data();
  zox_render_stats_init(&picture.stats);
  picture.status = zox_render(volume.get(), &view, run, &planes, &picture.stats);
  return picture;
}

namespace {

double wanted_sample(const zox_render_volume_info& info, double value) {
  return std::round((value - info.sample_intercept) / info.sample_slope);
}

}  // namespace

PlainVolume plain_volume(const Scene& scene, const Volume& volume) {
  const zox_render_volume_info info = info_of(volume);
  PlainVolume plain;
  for (size_t a = 0; a < 3; ++a) {
    plain.size[a] = scene.array.size[a];
    std::copy(scene.array.axes[a], scene.array.axes[a] + 3, plain.axes[a].begin());
    plain.origin[a] = scene.array.origin[a];
  }
  plain.positions = scene.positions;
  const double granted = info.exact ? 1e-9 : 0.501;
  size_t next = 0, wrong = 0;
  for (int32_t z = 0; z < plain.size[2]; ++z)
    for (int32_t y = 0; y < plain.size[1]; ++y)
      for (int32_t x = 0; x < plain.size[0]; ++x, ++next) {
        const int32_t at[3] = {x, y, z};
        double value = 0;
        EXPECT_EQ(zox_render_voxel(volume.get(), at, &value), ZOX_RENDER_OK) << zox_render_last_error();
        const double wanted = scene.voxels[next] * scene.array.slope + scene.array.intercept;
        const double units = (value - wanted) / info.sample_slope;
        // All 65536 values of 16 bits and a mark for nothing do not fit: the lowest becomes the next.
        const bool lowest_of_all = wanted_sample(info, wanted) == ZOX_RENDER_NOTHING;
        if (std::abs(units) > (lowest_of_all ? 1 : granted) && wrong++ == 0)
          ADD_FAILURE() << "voxel " << x << "," << y << "," << z << " is " << value << ", given " << wanted
                        << ", a unit is " << info.sample_slope;
        plain.samples.push_back(std::round((value - info.sample_intercept) / info.sample_slope));
      }
  EXPECT_EQ(wrong, 0u) << "voxels of " << next;
  return plain;
}

Play play_of(const Scene& scene, const zox_render_volume_info& info, const zox_render_view& view) {
  Play play{0x1p-19, 0x1p-21 * 1.01, 0, 0};
  if (info.regions > 1) {
    play.start = 0x1p-13;
    play.step = 0x1p-20;
    double widest = 0, narrowest = std::numeric_limits<double>::infinity();
    for (size_t z = 0; z + 1 < scene.positions.size(); ++z) {
      widest = std::max(widest, scene.positions[z + 1] - scene.positions[z]);
      narrowest = std::min(narrowest, scene.positions[z + 1] - scene.positions[z]);
    }
    play.slices = widest / narrowest;
  }
  // 8-bit samples are weighted in 10 bits along y and z, and both times lose less than 2^-10 in between.
  if (info.bits == 8 && view.interpolation == ZOX_RENDER_TRILINEAR) play.weight = play.value = 0x1p-9;
  return play;
}

void compare_with_plain(const Scene& scene, const Volume& volume, const zox_render_view& view,
                        int64_t* pixels) {
  ASSERT_NE(volume, nullptr);
  const zox_render_volume_info info = info_of(volume);
  const PlainVolume plain = plain_volume(scene, volume);
  const zox_render_geometry geometry = geometry_of(volume, view);
  const PlainRenderer renderer(plain, view, geometry.pixel_size, geometry.step, play_of(scene, info, view));
  const Picture picture = render(volume, view);
  if (picture.status != ZOX_RENDER_EMPTY) {
    ASSERT_EQ(picture.status, ZOX_RENDER_OK) << zox_render_last_error();
  }
  std::vector<PlainSample> samples;
  int64_t wrong = 0;
  for (int row = 0; row < view.height; ++row)
    for (int column = 0; column < view.width; ++column) {
      renderer.ray(column, row, samples);
      const Expectation expectation =
          expect(samples, view.reduction, info.sample_slope, info.sample_intercept);
      const size_t at =
          static_cast<size_t>(row) * static_cast<size_t>(view.width) + static_cast<size_t>(column);
      const bool empty = picture.status == ZOX_RENDER_EMPTY;
      const int16_t sample = empty ? int16_t{ZOX_RENDER_NOTHING} : picture.samples[at];
      std::string verdict = judge(expectation, sample, 1);
      if (verdict.empty() && !empty && view.reduction != ZOX_RENDER_MEAN)
        verdict = judge_depth(samples, sample, picture.depths[at], view.reduction);
      if (!verdict.empty() && ++wrong <= 3)
        ADD_FAILURE() << "pixel " << column << "," << row << ": " << verdict << ", of " << samples.size()
                      << " samples";
      if (pixels != nullptr && sample != ZOX_RENDER_NOTHING) ++*pixels;
    }
  EXPECT_EQ(wrong, 0) << "pixels of " << view.width << " x " << view.height;
}

}  // namespace zox_test
