#include "blocked_volume.h"

#include <sys/mman.h>
#include <zox_volume_layout.h>

#include <map>
#include <mutex>
#include <tuple>

namespace zox_test {
namespace {

constexpr int kBrickDepth = 32;

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

const GuardedBuffer* cleared_buffer(size_t bytes) {
  static auto* const kept = new std::map<size_t, GuardedBuffer>;
  GuardedBuffer& buffer = (*kept)[bytes];
  if (buffer.data() == nullptr) buffer = GuardedBuffer(bytes, GuardedBuffer::Flush::kEnd);
  madvise(buffer.pages(), buffer.pages_size(), MADV_DONTNEED);
  return &buffer;
}

// The largest sizes that the layout has, without the memory that filling them would take.
BlockedVolume draw_sparse_volume(const Caster& caster, Random& random) {
  const int size = random.pick({512, 700, 1024, 2047, 2048});
  const int edge = blocked_edge(size), depth = kBrickDepth * (2048 / edge) * (2048 / edge);
  const size_t bytes = zox_blocked_elements(edge, depth) * static_cast<size_t>(caster.element_size());
  return {cleared_buffer(bytes), size, edge, depth, true};
}

}  // namespace

void fill_cell(const BlockedVolume& volume, const Voxel& at, int element_size, Contents contents,
               Random& random) {
  const size_t size = static_cast<size_t>(element_size);
  for (int corner = 0; corner < 8; ++corner) {
    const int x = at.x + (corner & 1), y = at.y + (corner >> 1 & 1), z = at.z + (corner >> 2);
    if (x >= volume.edge || y >= volume.edge || z >= volume.depth) continue;
    const size_t index = zox_blocked_index(volume.edge, x, y, z);
    fill_voxels(volume.buffer->data() + index * size, size, element_size, contents, random);
  }
}

BlockedVolume draw_blocked_volume(const Caster& caster, Random& random) {
  if (random.chance(0.04)) return draw_sparse_volume(caster, random);
  const int size = random.pick({64, 64, 100, 1, 127, 128, 128, 200, 255, 256, 384});
  const int edge = blocked_edge(size);
  const int depth = kBrickDepth * (edge == 256 ? 1 : random.whole(1, 256 / edge));
  const size_t voxels = zox_blocked_elements(edge, depth);
  const auto flush = random.chance(0.5) ? GuardedBuffer::Flush::kStart : GuardedBuffer::Flush::kEnd;
  const GuardedBuffer* buffer = kept_buffer({voxels, caster.element_size(), draw_contents(random), flush});
  return {buffer, size, edge, depth, false};
}

}  // namespace zox_test
