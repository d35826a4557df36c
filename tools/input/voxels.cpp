#include "voxels.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include "file.h"
#include "inflate.h"
#include "parse_voxels.h"
#include "text.h"

namespace zox::input {
namespace {

int32_t render_type(Stored type) {
  switch (type) {
    case Stored::kU8:
      return ZOX_RENDER_UINT8;
    case Stored::kS8:
      return ZOX_RENDER_INT8;
    case Stored::kU16:
      return ZOX_RENDER_UINT16;
    case Stored::kS16:
      return ZOX_RENDER_INT16;
    case Stored::kU32:
      return ZOX_RENDER_UINT32;
    case Stored::kS32:
      return ZOX_RENDER_INT32;
    case Stored::kF32:
      return ZOX_RENDER_FLOAT32;
    default:
      return ZOX_RENDER_FLOAT64;
  }
}

bool is_long(Stored type) { return type == Stored::kU64 || type == Stored::kS64; }

// Bytes before the wanted voxels in a raw file that holds `voxels` voxels.
uint64_t raw_begin(const VoxelSource& source, const File& file, uint64_t voxels) {
  const uint64_t bytes = voxels * stored_bytes(source.type);
  if (!source.at_end) return source.skip;
  if (file.size() < bytes) refuse_cut(source.header);
  return file.size() - bytes;
}

bool map_raw(const VoxelSource& source, Found& found) {
  const size_t size = stored_bytes(source.type);
  if (source.packing != Packing::kRaw || source.files.size() != 1 || is_long(source.type)) return false;
  if (source.swapped && size > 1) return false;
  const File file(source.files[0], source.files[0] == source.header ? "" : source.header);
  const uint64_t begin = raw_begin(source, file, source.total);
  if (begin > file.size() || (file.size() - begin) / size < source.total) refuse_cut(source.header);
  if (begin % size != 0) return false;
  found.file = source.files[0];
  found.offset = begin + source.first * size;
  return true;
}

void read_raw(const VoxelSource& source, std::byte* out) {
  const size_t size = stored_bytes(source.type);
  const uint64_t voxels = source.total / source.files.size();  // in each
  for (size_t i = 0; i < source.files.size(); ++i) {
    const uint64_t begin = std::max(source.first, i * voxels);
    const uint64_t end = std::min(source.first + source.count, (i + 1) * voxels);
    if (begin >= end) continue;
    const File file(source.files[i], source.files[i] == source.header ? "" : source.header);
    const uint64_t from = raw_begin(source, file, voxels) + (begin - i * voxels) * size;
    if (!file.read_into(from, out, (end - begin) * size)) refuse_cut(source.files[i]);
    out += (end - begin) * size;
  }
}

void swap_bytes(std::byte* at, uint64_t count, size_t size) {
  const auto swap = [&]<class Word>(Word, auto swapped) {
    for (uint64_t i = 0; i < count; ++i) {
      Word word;
      std::memcpy(&word, at + i * sizeof word, sizeof word);
      word = swapped(word);
      std::memcpy(at + i * sizeof word, &word, sizeof word);
    }
  };
  if (size == 2) swap(uint16_t{}, [](uint16_t word) { return __builtin_bswap16(word); });
  if (size == 4) swap(uint32_t{}, [](uint32_t word) { return __builtin_bswap32(word); });
  if (size == 8) swap(uint64_t{}, [](uint64_t word) { return __builtin_bswap64(word); });
}

template <class To, class Long>
void narrow_to(std::byte* at, uint64_t count) {
  for (uint64_t i = 0; i < count; ++i) {
    Long value;
    std::memcpy(&value, at + i * sizeof value, sizeof value);
    const To narrow = static_cast<To>(value);
    std::memcpy(at + i * sizeof narrow, &narrow, sizeof narrow);
  }
}

// In place: what is written never gets ahead of what is read.
template <class Long>
int32_t narrow(std::byte* at, uint64_t count) {
  const Long* values = reinterpret_cast<const Long*>(at);
  const auto [low, high] = std::minmax_element(values, values + count);
  const Long least = *low;
  const Long most = *high;
  if (std::in_range<int32_t>(least) && std::in_range<int32_t>(most)) {
    narrow_to<int32_t, Long>(at, count);
    return ZOX_RENDER_INT32;
  }
  if (std::in_range<uint32_t>(least) && std::in_range<uint32_t>(most)) {
    narrow_to<uint32_t, Long>(at, count);
    return ZOX_RENDER_UINT32;
  }
  narrow_to<double, Long>(at, count);
  return ZOX_RENDER_FLOAT64;
}

void unpack(const VoxelSource& source, std::byte* out) {
  const size_t size = stored_bytes(source.type);
  const File file(source.files.at(0), source.files[0] == source.header ? "" : source.header);
  const Mapping mapping = file.map();
  Bytes packed = bytes_of(mapping);
  if (source.packed_skip > packed.size()) refuse_cut(source.header);
  packed = packed.subspan(static_cast<size_t>(source.packed_skip));
  bool whole = false;
  if (source.packing == Packing::kDeflate) {
    const std::span<std::byte> wanted(out, static_cast<size_t>(source.count * size));
    whole =
        inflate_into(packed, source.skip + source.first * size, source.skip + source.total * size, wanted);
  } else {
    whole = parse_voxels(source, packed, out);
  }
  if (!whole) refuse_cut(source.files[0]);
}

}  // namespace

size_t stored_bytes(Stored type) { return is_long(type) ? 8 : type_bytes(render_type(type)); }

void set_strides(Found& found, const int64_t (&voxels)[3]) {
  for (size_t axis = 0; axis < 3; ++axis)
    found.array.strides[axis] = voxels[axis] * static_cast<int64_t>(type_bytes(found.array.type));
}

void take_voxels(Stored type, std::byte* voxels, uint64_t count, Found& found) {
  found.array.type = render_type(type);
  if (type == Stored::kU64) found.array.type = narrow<uint64_t>(voxels, count);
  if (type == Stored::kS64) found.array.type = narrow<int64_t>(voxels, count);
}

void read_voxels(const VoxelSource& source, std::byte* out) {
  if (source.packing == Packing::kRaw)
    read_raw(source, out);
  else if (source.files.size() > 1)
    refuse(quoted(source.header) + " spreads packed voxels over several files, which cannot be read.");
  else
    unpack(source, out);
  const bool text = source.packing == Packing::kText;
  if (source.swapped && !text) swap_bytes(out, source.count, stored_bytes(source.type));
}

int32_t block_type(Stored type) { return render_type(type); }

std::byte* copy_as_block(Stored type, const std::byte* from, size_t count, std::byte* to) {
  const size_t bytes = count * stored_bytes(type);
  std::memcpy(to, from, bytes);
  if (type == Stored::kU64) narrow_to<double, uint64_t>(to, count);
  if (type == Stored::kS64) narrow_to<double, int64_t>(to, count);
  return to + bytes;
}

void deliver(const VoxelSource& source, VoxelMemory& memory, Found& found) {
  constexpr uint64_t kMostVoxels = uint64_t{1} << 48;
  if (source.total > kMostVoxels) refuse_cut(source.header);
  found.array.type = render_type(source.type);
  if (map_raw(source, found)) return;
  const size_t size = stored_bytes(source.type);
  // What inflating leaves out goes before the voxels, which are to begin at a multiple of 8.
  const uint64_t skip = source.skip + source.first * size;
  const uint64_t room = source.packing == Packing::kDeflate && skip <= kSkipInPlace ? (skip + 7) / 8 * 8 : 0;
  std::byte* const out = memory.allocate(room + source.count * size, source.header) + room;
  read_voxels(source, out);
  take_voxels(source.type, out, source.count, found);
  found.offset = room;
}

}  // namespace zox::input
