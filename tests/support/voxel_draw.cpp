#include "voxel_draw.h"

#include <algorithm>
#include <cstring>

namespace zox_test {

Contents draw_contents(Random& random) {
  return random.pick({Contents::kAny, Contents::kAny, Contents::kZeroOrOne, Contents::kExtreme});
}

void fill_voxels(uint8_t* at, size_t bytes, int element_size, Contents contents, Random& random) {
  const bool wide = element_size == 2;
  for (size_t done = 0; done < bytes; done += 8) {
    uint64_t word = random.bits();
    if (contents == Contents::kZeroOrOne) {
      word &= wide ? 0x0001000100010001u : 0x0101010101010101u;
    } else if (contents == Contents::kExtreme) {
      // 255 or 254; 32767 or -32768.
      const uint64_t low = word & (wide ? 0x0001000100010001u : 0x0101010101010101u);
      word = wide ? 0x7FFF7FFF7FFF7FFFu + low : 0xFEFEFEFEFEFEFEFEu | low;
    }
    std::memcpy(at + done, &word, std::min<size_t>(8, bytes - done));
  }
}

}  // namespace zox_test
