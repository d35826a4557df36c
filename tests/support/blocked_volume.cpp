#include "blocked_volume.h"

#include <map>
#include <mutex>
#include <tuple>

#include "voxels.h"

namespace zox_test {
namespace {

constexpr int kBrickEdge = 64;
constexpr int kBrickDepth = 32;
constexpr size_t kBrickVoxels = size_t{kBrickEdge} * kBrickEdge * kBrickDepth;

using Key = std::tuple<size_t, int, Contents, GuardedBuffer::Flush>;

const GuardedBuffer* kept_buffer(const Key& key) {
  // Never freed: other threads' batches may hold pointers into it until the process ends.
  static auto* const kept = new std::map<Key, GuardedBuffer>;
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  GuardedBuffer& buffer = (*kept)[key];
  if (buffer.data() == nullptr) {
    const auto [voxels, element_size, contents, flush] = key;
    Random random(voxels + static_cast<size_t>(element_size) * 3 + static_cast<size_t>(contents));
    buffer = GuardedBuffer(voxels * static_cast<size_t>(element_size), flush);
    fill_voxels(buffer.data(), buffer.size(), element_size, contents, random);
    buffer.seal();
  }
  return &buffer;
}

}  // namespace

BlockedVolume draw_blocked_volume(const Caster& caster, Random& random) {
  const int size = random.pick({64, 64, 100, 1, 127, 128, 128, 200, 255, 256, 384});
  const int bricks = size < 128 ? 1 : size < 256 ? 2 : 4;
  const int layers = bricks == 4 ? 1 : random.whole(1, 4 / bricks);
  const size_t voxels = kBrickVoxels * static_cast<size_t>(bricks * bricks * layers);
  const auto flush = random.chance(0.5) ? GuardedBuffer::Flush::kStart : GuardedBuffer::Flush::kEnd;
  const GuardedBuffer* buffer = kept_buffer({voxels, caster.element_size, draw_contents(random), flush});
  return {buffer, size, kBrickEdge * bricks, kBrickDepth * layers};
}

}  // namespace zox_test
