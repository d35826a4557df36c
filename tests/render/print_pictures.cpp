// Prints a checksum of each of some pictures, so that processors can be compared.
#include <cstdio>

#include "library.h"

using namespace zox_test;

namespace {

// FNV-1a over the bytes of a plane.
template <class Plane>
void add(uint64_t& sum, const Plane& plane) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(plane.data());
  for (size_t i = 0; i < plane.size() * sizeof plane[0]; ++i) sum = (sum ^ bytes[i]) * 1099511628211u;
}

}  // namespace

int main() {
  for (uint64_t seed = 1; seed <= 60; ++seed) {
    Random random(seed);
    const int type = random.pick({ZOX_RENDER_UINT8, ZOX_RENDER_INT16, ZOX_RENDER_FLOAT32});
    const auto scene = random_scene(random, type, 30);
    if (random.chance(0.25)) draw_positions(*scene, random);
    zox_render_view view = random_view(random, 50);
    view.reduction = random.whole(ZOX_RENDER_MAXIMUM, ZOX_RENDER_LARGEST_MAGNITUDE);
    for (const int layout : {ZOX_RENDER_BRICKS, ZOX_RENDER_STACK}) {
      const Picture picture = render(make_volume(*scene, layout), view);
      uint64_t sum = 14695981039346656037u;
      add(sum, picture.pixels);
      add(sum, picture.samples);
      add(sum, picture.depths);
      std::printf("%d %d %d %016llx\n", static_cast<int>(seed), layout, picture.status,
                  static_cast<unsigned long long>(sum));
    }
  }
}
