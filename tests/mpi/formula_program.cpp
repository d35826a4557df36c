// Every rank makes its parts of a volume that no memory holds by a formula, and the picture is compared
// with what the formula says of every column.
//     mpirun -n N zox-mpi-formula COLUMNS ROWS SLICES
#include <parts/source.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "spread_volume.h"

namespace {

using namespace zox_mip_mpi;
namespace parts = zox::parts;

constexpr int kPicture = 512;

// From above, on rows of pixels whose middles are columns of voxels.
parts::Settings settings_of(const parts::Size& size) {
  parts::Settings settings{};
  zox_render_view_init(&settings.view);
  settings.view.width = settings.view.height = kPicture;
  settings.view.projection = ZOX_RENDER_ORTHOGRAPHIC;
  settings.view.interpolation = ZOX_RENDER_NEAREST;
  zox_render_view_by_name(&settings.view, "superior");
  settings.view.pixel_size = (std::min(size[0], size[1]) / 600) | 1;
  settings.view.use_center = 1;
  // An odd number of columns a pixel, whose middle lies half of that beside the picture's.
  settings.view.center[0] = size[0] / 2 + 0.5;
  settings.view.center[1] = size[1] / 2 + 0.5;
  settings.view.center[2] = size[2] / 2;
  zox_render_volume_options_init(&settings.options);
  zox_render_run_init(&settings.run);
  return settings;
}

// The largest voxel of a column: its peak's, if the slices reach there, else the nearest to it.
int expected(int32_t x, int32_t y, const parts::Size& size) {
  const int32_t peak = (x * 7 + y * 3) % 509;
  const int32_t beyond = peak < size[2] ? 0 : peak - size[2] + 1;
  return (x * 31 + y * 17) % 8192 - 2 * beyond;
}

int compare(const SpreadVolume& volume, const parts::Settings& settings, const parts::Picture& picture,
            const parts::Size& size) {
  int wrong = 0, seen = 0;
  for (int row = 0; row < kPicture; ++row)
    for (int column = 0; column < kPicture; ++column) {
      double voxel[3];
      zox_render_locate(volume.corner(), &settings.view, column, row, 0, nullptr, voxel);
      const auto x = static_cast<int32_t>(std::floor(voxel[0] + 0.5)),
                 y = static_cast<int32_t>(std::floor(voxel[1] + 0.5));
      const bool inside = x >= 0 && y >= 0 && x < size[0] && y < size[1];
      const int16_t sample = picture.samples[static_cast<size_t>(row * kPicture + column)];
      const double value = sample * picture.sample_slope + picture.sample_intercept;
      if (inside ? value != expected(x, y, size) : sample != ZOX_RENDER_NOTHING) ++wrong;
      seen += inside;
    }
  std::printf("%d pixels over the volume, %d wrong\n", seen, wrong);
  return wrong == 0 && seen > kPicture * kPicture / 2 ? 0 : 1;
}

int run(int argc, char** argv) {
  const Group group(MPI_COMM_WORLD);
  if (argc != 4) return 2;
  const parts::Size size = {std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3])};
  const auto source = parts::formula_source(size);
  const parts::Settings settings = settings_of(size);
  // Parts of 512 voxels a side: less than a gigabyte at a time for each rank, and none is kept.
  const SpreadVolume volume(group, {*source, true, {}}, settings, 512, uint64_t{1} << 30);
  int64_t cast = 0;
  const parts::Picture picture = volume.render(settings, cast);
  return group.is_root() ? compare(volume, settings, picture, size) : 0;
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int status = 1;
  try {
    status = run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  MPI_Finalize();
  return status;
}
