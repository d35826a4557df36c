#include "slice_stack.h"

#include <algorithm>
#include <numeric>

namespace zox_test {
namespace {

constexpr int64_t kPageBytes = 4096;

// Where pointers lead that nobody may follow.
uint8_t* nowhere() {
  // Never freed: the pool of pages is gone before statics are.
  static const auto* const last_page = new GuardedBuffer(4096, GuardedBuffer::Flush::kEnd);
  return last_page->data() + 4096;
}

const void* address(const uint8_t* base, int64_t offset) {
  return reinterpret_cast<const void*>(reinterpret_cast<intptr_t>(base) + offset);
}

enum class Rows { kApart, kBackwards, kShuffled, kOverlapping, kOne };

// The offsets of `count` rows of `span` bytes, from any common origin.
std::vector<int32_t> draw_offsets(Rows layout, int count, int span, int alignment, Random& random) {
  const int pitch = span + alignment * random.pick({0, 0, 1, random.whole(0, 9)});
  const int origin = alignment * random.pick({0, 0, random.whole(-999, 999)});
  std::vector<int32_t> offsets;
  for (int y = 0; y < count; ++y) {
    int offset = 0;
    if (layout == Rows::kApart || layout == Rows::kShuffled) offset = y * pitch;
    if (layout == Rows::kBackwards) offset = -y * pitch;
    if (layout == Rows::kOverlapping) offset = alignment * random.whole(0, count);
    offsets.push_back(origin + offset);
  }
  for (int y = 0; layout == Rows::kShuffled && y < count; ++y) {
    std::swap(offsets[static_cast<size_t>(y)], offsets[static_cast<size_t>(random.whole(y, count - 1))]);
  }
  return offsets;
}

// Offsets so large that offset and column add up to more than 32 bits hold.
std::vector<int32_t> draw_top_offsets(int count, int first_byte, int alignment, Random& random) {
  std::vector<int32_t> offsets;
  for (int y = 0; y < count; ++y) {
    offsets.push_back(INT32_MAX - (alignment - 1) - random.whole(0, first_byte / alignment - 1) * alignment);
  }
  return offsets;
}

// These add row offset and column in 32 bits, the others in 64.
bool sums_in_32_bits(const Caster& caster, bool one_region) {
  return caster.element_size() == 1 && !one_region && !(caster.parallel() && caster.trilinear());
}

}  // namespace

SliceStack::SliceStack(const Caster& caster, const std::vector<Voxel>& samples, int slices, bool one_region,
                       bool apart, bool strict, Random& random)
    : table_(sizeof(void*) * static_cast<size_t>(std::max(0, slices)), random),
      pages_(static_cast<size_t>(std::max(0, slices))) {
  std::vector<bool> used(pages_.size());
  const int reach = caster.trilinear() ? 1 : 0;
  for (const Voxel& v : samples) {
    for (int s = v.z; v.z >= 0 && v.z < slices - reach && s <= v.z + reach; ++s)
      used[static_cast<size_t>(s)] = true;
  }
  const Extent bytes = draw_row_offsets(caster, samples, sums_in_32_bits(caster, one_region), strict, random);
  place_slices(used, bytes, caster.element_size(), apart, random);
  const Contents contents = draw_contents(random);
  for (GuardedBuffer& buffer : buffers_) {
    fill_voxels(buffer.data(), buffer.size(), caster.element_size(), contents, random);
    buffer.seal();
  }
  table_.seal();
}

SliceStack::Extent SliceStack::draw_row_offsets(const Caster& caster, const std::vector<Voxel>& samples,
                                                bool wrapping_sums, bool strict, Random& random) {
  if (samples.empty()) {
    rowoffs_ = GuardedBuffer(0, random);
    rowoffs_.seal();
    return {0, 0};
  }
  Voxel low = samples[0], high = samples[0];
  for (const Voxel& v : samples) {
    low = {std::min(low.x, v.x), std::min(low.y, v.y), 0};
    high = {std::max(high.x, v.x), std::max(high.y, v.y), 0};
  }
  if (caster.trilinear()) high = {high.x + 1, high.y + 1, 0};
  const int size = caster.element_size();
  const int first_byte = caster.bit() ? low.x >> 3 : low.x * size;
  const int span = (caster.bit() ? (high.x >> 3) + 1 : (high.x + 1) * size) - first_byte;
  const Rows layout = random.pick({Rows::kApart, Rows::kApart, Rows::kApart, Rows::kBackwards,
                                   Rows::kShuffled, Rows::kOverlapping, Rows::kOne});
  const bool at_top = !strict && first_byte >= size && random.chance(0.1);
  std::vector<int32_t> offsets = at_top ? draw_top_offsets(high.y + 1, first_byte, size, random)
                                        : draw_offsets(layout, high.y + 1, span, size, random);
  Extent bytes{INT64_MAX, INT64_MIN};
  for (int y = low.y; y <= high.y; ++y) {
    int64_t first = int64_t{offsets[static_cast<size_t>(y)]} + first_byte;
    if (wrapping_sums) first = static_cast<int32_t>(first);
    bytes.low = std::min(bytes.low, first);
    bytes.high = std::max(bytes.high, first + span);
  }
  // The record does not say how many rows there are: entries below the first that a sample touches need
  // not exist, no more than those behind the last.
  first_row_ = low.y;
  rowoffs_ = GuardedBuffer((offsets.size() - static_cast<size_t>(low.y)) * sizeof(int32_t), random);
  std::copy(offsets.begin() + low.y, offsets.end(), rowoffs_.as<int32_t>());
  rowoffs_.seal();
  return bytes;
}

void SliceStack::place_slices(const std::vector<bool>& used, Extent bytes, int alignment, bool apart,
                              Random& random) {
  const size_t size = static_cast<size_t>(bytes.high - bytes.low);
  const int first = static_cast<int>(std::find(used.begin(), used.end(), true) - used.begin());
  const int last = static_cast<int>(used.size()) - 1 -
                   static_cast<int>(std::find(used.rbegin(), used.rend(), true) - used.rbegin());
  const bool one_buffer = first <= last && random.chance(0.4);
  const bool falling = random.chance(0.2);
  const bool forget_unused = random.chance(0.6);
  int64_t pitch = static_cast<int64_t>(size) + alignment * random.pick({0, 0, 1, random.whole(0, 99)});
  if (apart) pitch = (pitch + kPageBytes - 1) / kPageBytes * kPageBytes;
  const size_t whole =
      static_cast<size_t>(pitch * (last - first)) + (apart ? static_cast<size_t>(pitch) : size);
  if (one_buffer) buffers_.emplace_back(whole, random);
  for (int s = 0; s < static_cast<int>(used.size()); ++s) {
    const void*& entry = table_.as<const void*>()[s];
    entry = nowhere();
    if (one_buffer && (used[static_cast<size_t>(s)] || !forget_unused)) {
      const int64_t offset = pitch * (falling ? last - s : s - first);
      entry = address(buffers_[0].data(), offset - bytes.low);
      if (apart && used[static_cast<size_t>(s)]) {
        pages_[static_cast<size_t>(s)] = {buffers_[0].data() + offset, static_cast<size_t>(pitch)};
      }
    } else if (used[static_cast<size_t>(s)]) {
      const bool again = !apart && !buffers_.empty() && random.chance(0.05);
      if (!again) buffers_.emplace_back(size, random);
      entry = address(buffers_.back().data(), -bytes.low);
      if (apart) pages_[static_cast<size_t>(s)] = {buffers_.back().pages(), buffers_.back().pages_size()};
    }
  }
}

}  // namespace zox_test
