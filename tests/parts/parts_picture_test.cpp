// Parts give the picture of the whole, byte for byte, however the volume is cut.
#include <gtest/gtest.h>
#include <parts/picture.h>

#include <algorithm>
#include <random>

namespace zox::parts {
namespace {

// A phantom in memory, as a source and as one array.
std::unique_ptr<Source> phantom_source() { return source_of("phantom", input::make_phantom()); }

Settings settings_of(int size, double azimuth, double elevation) {
  Settings settings{};
  zox_render_view_init(&settings.view);
  settings.view.width = settings.view.height = size;
  settings.view.azimuth = azimuth;
  settings.view.elevation = elevation;
  zox_render_volume_options_init(&settings.options);
  zox_render_run_init(&settings.run);
  settings.depths = true;
  return settings;
}

struct Whole {
  std::vector<uint8_t> pixels;
  std::vector<int16_t> samples;
  std::vector<int32_t> depths;
};

Whole render_whole(const zox_render_array& array, const Settings& settings) {
  const size_t count = size_t(settings.view.width) * size_t(settings.view.height);
  Whole whole{std::vector<uint8_t>(count), std::vector<int16_t>(count), std::vector<int32_t>(count)};
  zox_render_volume* volume = nullptr;
  EXPECT_EQ(zox_render_volume_create(&array, &settings.options, nullptr, &volume), ZOX_RENDER_OK)
      << zox_render_last_error();
  zox_render_picture picture;
  zox_render_picture_init(&picture);
  picture.pixels = whole.pixels.data();
  picture.samples = whole.samples.data();
  picture.depths = whole.depths.data();
  EXPECT_EQ(zox_render(volume, &settings.view, nullptr, &picture, nullptr), ZOX_RENDER_OK)
      << zox_render_last_error();
  zox_render_volume_destroy(volume);
  return whole;
}

Picture render_parts(const Source& source, std::vector<Part> parts, const Settings& settings,
                     std::mt19937& random) {
  const Measure whole = measure(source, 0, source.whole().size[2]);
  std::shuffle(parts.begin(), parts.end(), random);
  Picture picture = empty_picture(settings);
  for (const Part& part : parts) PartVolume(source, whole, part, settings).add_to(picture, settings);
  return picture;
}

void expect_same(const zox_render_array& array, const Settings& settings, int cuts, std::mt19937& random) {
  const Whole whole = render_whole(array, settings);
  input::Scan scan;
  scan.array = array;
  const auto source = source_of("array", std::move(scan));
  for (int i = 0; i < cuts; ++i) {
    const auto draw = [&](int low, int high) {
      return std::uniform_int_distribution<int>(low, high)(random);
    };
    const Limits limits{draw(20, 100), 0, draw(1, 9)};
    const Size size = {array.size[0], array.size[1], array.size[2]};
    const Picture picture = render_parts(*source, cut(size, limits, {}), settings, random);
    const std::string what =
        "longest " + std::to_string(limits.longest) + ", parts " + std::to_string(limits.least_parts);
    EXPECT_TRUE(picture.samples == whole.samples) << what;
    if (settings.depths) {
      EXPECT_TRUE(picture.depths == whole.depths) << what;
    }
    double center = 0, width = 0;
    EXPECT_TRUE(display(settings, picture, center, width) == whole.pixels) << what;
  }
}

TEST(Parts, GiveThePictureOfTheWholePhantom) {
  const input::Scan scan = input::make_phantom();
  std::mt19937 random(3);
  for (const int32_t projection : {ZOX_RENDER_PERSPECTIVE, ZOX_RENDER_ORTHOGRAPHIC})
    for (const int32_t interpolation : {ZOX_RENDER_TRILINEAR, ZOX_RENDER_NEAREST})
      for (const int32_t reduction : {ZOX_RENDER_MAXIMUM, ZOX_RENDER_MINIMUM, ZOX_RENDER_LARGEST_MAGNITUDE})
        for (const int32_t layout : {ZOX_RENDER_STACK, ZOX_RENDER_BRICKS}) {
          SCOPED_TRACE(testing::Message()
                       << "projection " << projection << ", interpolation " << interpolation << ", reduction "
                       << reduction << ", layout " << layout);
          Settings settings = settings_of(96, 35, 25);
          settings.view.projection = projection;
          settings.view.interpolation = interpolation;
          settings.view.reduction = reduction;
          settings.options.layout = layout;
          settings.depths = layout == ZOX_RENDER_STACK;
          expect_same(scan.array, settings, 2, random);
        }
}

TEST(Parts, GiveThePictureOfUnevenSlices) {
  input::Scan scan = input::make_phantom();
  std::mt19937 random(4);
  double at = 0;
  for (int z = 0; z < scan.array.size[2]; ++z) {
    scan.positions.push_back(at);
    at += z % 10 == 7 ? 3.1 : z < 60 ? 1.6 : 1.1;
  }
  scan.array.positions = scan.positions.data();
  for (const int32_t interpolation : {ZOX_RENDER_TRILINEAR, ZOX_RENDER_NEAREST}) {
    SCOPED_TRACE(interpolation);
    Settings settings = settings_of(96, -40, 15);
    settings.view.interpolation = interpolation;
    expect_same(scan.array, settings, 3, random);
  }
}

TEST(Parts, TheRangeLeavesOutWhatIsNotFinite) {
  const float inf = std::numeric_limits<float>::infinity();
  std::vector<float> voxels = {1, inf, -3, 2, std::nanf(""), 5, 0, -inf};
  input::Scan scan;
  zox_render_array_init(&scan.array);
  scan.array.type = ZOX_RENDER_FLOAT32;
  std::fill(std::begin(scan.array.size), std::end(scan.array.size), 2);
  scan.array.strides[0] = 4;
  scan.array.strides[1] = 8;
  scan.array.strides[2] = 16;
  scan.array.data = voxels.data();
  const auto source = source_of("floats", std::move(scan));
  const Measure result = measure(*source, 0, 2);
  EXPECT_EQ(result.lowest, -3);
  EXPECT_EQ(result.highest, 5);
}

// Scanners fill what they have not seen with what is no number: whole parts may hold nothing else.
TEST(Parts, PartsWithoutAFiniteVoxelShowTheLowest) {
  std::vector<float> voxels(20 * 20 * 40, std::nanf(""));
  std::mt19937 random(6);
  for (size_t i = 0; i < voxels.size() / 3; ++i)
    voxels[i] = std::uniform_real_distribution<float>(-2, 3)(random);
  zox_render_array array;
  zox_render_array_init(&array);
  array.type = ZOX_RENDER_FLOAT32;
  array.data = voxels.data();
  array.size[0] = array.size[1] = 20;
  array.size[2] = 40;
  array.strides[0] = 4;
  array.strides[1] = 80;
  array.strides[2] = 1600;
  Settings settings = settings_of(64, 70, 20);
  for (const int32_t reduction : {ZOX_RENDER_MAXIMUM, ZOX_RENDER_MINIMUM}) {
    settings.view.reduction = reduction;
    input::Scan scan;
    scan.array = array;
    const auto source = source_of("floats", std::move(scan));
    const Whole whole = render_whole(array, settings);
    const Picture picture = render_parts(*source, cut({20, 20, 40}, {20, 0, 7}, {}), settings, random);
    EXPECT_TRUE(picture.samples == whole.samples);
    EXPECT_TRUE(picture.depths == whole.depths);
    // What samples mean is known before any part is rendered.
    zox_render_volume_info info;
    zox_render_volume_info_init(&info);
    const Measure range = measure(*source, 0, 40);
    zox_render_volume_get_info(corner(*source, range, settings)->handle(), &info);
    EXPECT_EQ(info.sample_slope, picture.sample_slope);
    EXPECT_EQ(info.sample_intercept, picture.sample_intercept);
  }
}

}  // namespace
}  // namespace zox::parts
