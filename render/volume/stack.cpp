// Slice stacks: the caller's slices, or a copy of them.
#include "volume/array_passes.h"
#include "volume/volume.h"

namespace render {
namespace {

constexpr int kSampleBytes = sizeof(int16_t);

// One sample more in each row, so that the neighbour of the last can be read; and rows an odd number of cache
// lines apart, since samples a power of two apart fight for the same few lines of a cache.
int64_t row_pitch(int columns) {
  const int64_t lines = (int64_t{columns} * kSampleBytes + kSampleBytes + 63) / 64;
  return (lines | 1) * 64;
}

void fill_tables(const Array& array, int64_t row_bytes, bool padded, Volume& volume) {
  Stack& stack = volume.stack;
  for (int y = 0; y < array.size[1]; ++y) stack.row_offsets.push_back(static_cast<int32_t>(y * row_bytes));
  stack.row_offsets.push_back(stack.row_offsets.back());
  stack.slices.insert(stack.slices.begin(), stack.slices.front());
  stack.slices.push_back(stack.slices.back());
  volume.layout = Layout::kStack;
  volume.has_next[0] = padded;
  volume.has_next[1] = volume.has_next[2] = true;
}

}  // namespace

bool fits_stack(const Array& array, const Storage& storage) {
  if (array.type != ZOX_RENDER_INT16 || storage.negated || storage.step != 1 || storage.base != 0 ||
      storage.first != 0)
    return false;
  const int64_t reach = (array.size[1] - 1) * array.row_bytes;
  if (array.column_bytes != kSampleBytes || reach != static_cast<int32_t>(reach)) return false;
  for (const std::byte* slice : array.slices)
    if (reinterpret_cast<uintptr_t>(slice) % kSampleBytes != 0) return false;
  return array.row_bytes % kSampleBytes == 0;
}

void refer_to_slices(const Array& array, Volume& volume) {
  volume.stack.slices.assign(array.slices.begin(), array.slices.end());
  fill_tables(array, array.row_bytes, false, volume);
  volume.copied = false;
}

uint64_t stack_bytes(const Size3& size) {
  return static_cast<uint64_t>(row_pitch(size[0]) * size[1] * size[2]);
}

void copy_stack(const Array& array, Volume& volume, Work& work) {
  const int64_t pitch = row_pitch(array.size[0]);
  volume.voxel_bytes = stack_bytes(array.size);
  volume.memory = Memory(volume.voxel_bytes);
  std::byte* const data = volume.memory.data();
  work.spread(array.size[2], 0.8, [&](int z) {
    for (int y = 0; y < array.size[1]; ++y) {
      auto* row = reinterpret_cast<int16_t*>(data + (int64_t{z} * array.size[1] + y) * pitch);
      sample_row(array, volume.storage, y, z, row);
      row[array.size[0]] = row[array.size[0] - 1];
    }
  });
  for (int z = 0; z < array.size[2]; ++z)
    volume.stack.slices.push_back(data + int64_t{z} * array.size[1] * pitch);
  fill_tables(array, pitch, true, volume);
}

}  // namespace render
