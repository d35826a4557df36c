#include "picture.h"

#include <algorithm>
#include <cstring>

namespace zox::parts {
namespace {

constexpr size_t kCounts = 65536;

// Of a library's sentence about a call for a source.
void check(int status, const std::string& name) {
  if (status == ZOX_RENDER_OK) return;
  throw input::Failure("'" + name + "' cannot be rendered: " + zox_render_last_error());
}

void count_samples(const zox_render_volume* volume, const std::string& name, Picture& picture) {
  std::vector<uint64_t> counts(kCounts);
  check(zox_render_sample_counts(volume, counts.data()), name);
  for (size_t i = 0; i < kCounts; ++i) picture.counts[i] += counts[i];
}

void take_scale(const zox_render_volume* volume, const std::string& name, Picture& picture) {
  zox_render_volume_info info;
  zox_render_volume_info_init(&info);
  check(zox_render_volume_get_info(volume, &info), name);
  picture.sample_slope = info.sample_slope;
  picture.sample_intercept = info.sample_intercept;
  picture.most_part_bytes = std::max(picture.most_part_bytes, info.voxel_bytes + info.bounds_bytes);
}

}  // namespace

uint64_t bytes_a_voxel(const zox_render_array& array) { return 3 + type_bytes(array.type); }

Picture empty_picture(const Settings& settings) {
  Picture picture;
  const size_t pixels = static_cast<size_t>(settings.view.width) * static_cast<size_t>(settings.view.height);
  picture.samples.assign(pixels, ZOX_RENDER_NOTHING);
  if (settings.depths) picture.depths.assign(pixels, ZOX_RENDER_NO_DEPTH);
  picture.counts.resize(kCounts);
  return picture;
}

PartVolume::PartVolume(const Source& source, const Measure& whole, const Part& part, const Settings& settings)
    : name_(source.name()), taken_(source.take(part)) {
  taken_.array.lowest = whole.lowest;
  taken_.array.highest = whole.highest;
  zox_render_volume* volume = nullptr;
  check(zox_render_volume_create(&taken_.array, &settings.options, &settings.run, &volume), name_);
  volume_.reset(volume);
}

void PartVolume::add_to(Picture& picture, const Settings& settings) const {
  take_scale(volume_.get(), name_, picture);
  count_samples(volume_.get(), name_, picture);
  Picture own = empty_picture(settings);
  zox_render_picture planes;
  zox_render_picture_init(&planes);
  planes.samples = own.samples.data();
  if (settings.depths) planes.depths = own.depths.data();
  zox_render_stats stats;
  zox_render_stats_init(&stats);
  const int status = zox_render(volume_.get(), &settings.view, &settings.run, &planes, &stats);
  if (status == ZOX_RENDER_EMPTY) return;
  check(status, name_);
  own.sample_slope = picture.sample_slope;
  own.sample_intercept = picture.sample_intercept;
  own.samples_asked = stats.samples;
  own.samples_cast = stats.samples_cast;
  own.counts.clear();
  add_picture(settings, own, picture);
}

namespace {

template <class Voxel>
void fill(std::vector<std::byte>& voxels, double value) {
  const auto voxel = static_cast<Voxel>(value);
  voxels.resize(8 * sizeof voxel);
  for (size_t i = 0; i < 8; ++i) std::memcpy(voxels.data() + i * sizeof voxel, &voxel, sizeof voxel);
}

void fill(int32_t type, std::vector<std::byte>& voxels, double value) {
  switch (type) {
    case ZOX_RENDER_UINT8:
      return fill<uint8_t>(voxels, value);
    case ZOX_RENDER_INT8:
      return fill<int8_t>(voxels, value);
    case ZOX_RENDER_INT16:
      return fill<int16_t>(voxels, value);
    case ZOX_RENDER_UINT16:
      return fill<uint16_t>(voxels, value);
    case ZOX_RENDER_INT32:
      return fill<int32_t>(voxels, value);
    case ZOX_RENDER_UINT32:
      return fill<uint32_t>(voxels, value);
    case ZOX_RENDER_FLOAT32:
      return fill<float>(voxels, value);
    default:
      return fill<double>(voxels, value);
  }
}

class Corner : public Source {
 public:
  Corner(const Source& of, double value) : Source(of.name()), of_(of), value_(value) {}
  const zox_render_array& whole() const override { return of_.whole(); }
  PartArray take(const Part& part) const override {
    PartArray result;
    result.array = description(part);
    fill(result.array.type, result.voxels, value_);
    result.array.data = result.voxels.data();
    std::fill(std::begin(result.array.strides), std::end(result.array.strides), 0);
    return result;
  }

 private:
  const Source& of_;
  double value_;
};

}  // namespace

std::unique_ptr<PartVolume> corner(const Source& source, const Measure& whole, const Settings& settings) {
  if (!(whole.lowest <= whole.highest))
    throw input::Failure("'" + source.name() + "' cannot be rendered: it holds no finite value.");
  const Part part{{0, 0, 0}, {2, 2, 2}, {0, 0, 0}, {2, 2, 2}};
  return std::make_unique<PartVolume>(Corner(source, whole.lowest), whole, part, settings);
}

void add_picture(const Settings& settings, const Picture& other, Picture& picture) {
  if (other.sample_slope == 0) return;
  picture.sample_slope = other.sample_slope;
  picture.sample_intercept = other.sample_intercept;
  check(zox_render_merge(settings.view.reduction, other.sample_slope, other.sample_intercept,
                         static_cast<int64_t>(picture.samples.size()), picture.samples.data(),
                         settings.depths ? picture.depths.data() : nullptr, other.samples.data(),
                         settings.depths ? other.depths.data() : nullptr),
        "a part");
  for (size_t i = 0; i < other.counts.size(); ++i) picture.counts[i] += other.counts[i];
  picture.samples_asked += other.samples_asked;
  picture.samples_cast += other.samples_cast;
  picture.most_part_bytes = std::max(picture.most_part_bytes, other.most_part_bytes);
}

std::vector<uint8_t> display(const Settings& settings, const Picture& picture, double& center,
                             double& width) {
  center = settings.view.window_center;
  width = settings.view.window_width;
  if (width == 0)
    check(zox_render_window_of_counts(picture.sample_slope, picture.sample_intercept, picture.counts.data(),
                                      &center, &width),
          "the picture");
  std::vector<uint8_t> pixels(picture.samples.size());
  check(zox_render_window(picture.sample_slope, picture.sample_intercept, center, width,
                          static_cast<int64_t>(pixels.size()), picture.samples.data(), pixels.data()),
        "the picture");
  return pixels;
}

}  // namespace zox::parts
