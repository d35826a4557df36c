#include "source.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace zox::parts {
namespace {

// Bytes from voxel (0, 0, 0) of the whole to a part's lowest, to its own first, and behind its highest.
struct Extent {
  int64_t low = 0, first = 0, high = 0;
};

Extent extent_of(const zox_render_array& whole, const Part& part) {
  Extent extent;
  for (size_t axis = 0; axis < 3; ++axis) {
    const int64_t begin = whole.strides[axis] * part.first[axis];
    const int64_t end = begin + whole.strides[axis] * (part.size[axis] - 1);
    extent.first += begin;
    extent.low += std::min(begin, end);
    extent.high += std::max(begin, end);
  }
  extent.high += static_cast<int64_t>(type_bytes(whole.type));
  return extent;
}

class ScanSource : public Source {
 public:
  ScanSource(std::string name, input::Scan scan) : Source(std::move(name)), scan_(std::move(scan)) {
    whole_ = scan_.array;
    whole_.data = nullptr;
  }

  const zox_render_array& whole() const override { return whole_; }

  PartArray take(const Part& part) const override {
    PartArray result;
    result.array = description(part);
    const Extent extent = extent_of(whole_, part);
    if (scan_.blocks) {
      result.memory = input::read_block(*scan_.blocks, whole_, part.first, part.size);
      result.array.data = result.memory.get();
      std::fill(std::begin(result.array.strides), std::end(result.array.strides), 0);
      return result;
    }
    if (scan_.file.empty()) {
      result.array.data = static_cast<const std::byte*>(scan_.array.data) + extent.first;
      return result;
    }
    const int64_t page = sysconf(_SC_PAGESIZE);
    const int64_t begin = (static_cast<int64_t>(scan_.offset) + extent.low) / page * page;
    const int64_t end = static_cast<int64_t>(scan_.offset) + extent.high;
    result.memory = map(begin, static_cast<size_t>(end - begin));
    result.array.data = static_cast<const std::byte*>(result.memory.get()) +
                        (static_cast<int64_t>(scan_.offset) + extent.first - begin);
    return result;
  }

 private:
  input::Mapping map(int64_t begin, size_t bytes) const {
    const int descriptor = open(scan_.file.c_str(), O_RDONLY | O_CLOEXEC);
    void* memory = MAP_FAILED;
    if (descriptor >= 0) memory = mmap(nullptr, bytes, PROT_READ, MAP_SHARED, descriptor, begin);
    const int reason = errno;
    if (descriptor >= 0) close(descriptor);
    if (memory == MAP_FAILED)
      throw input::Failure("'" + scan_.file + "' cannot be read: " + std::strerror(reason) + ".");
    return input::Mapping(memory, input::Unmap{bytes});
  }

  input::Scan scan_;
  zox_render_array whole_{};
};

class FormulaSource : public Source {
 public:
  explicit FormulaSource(const Size& size) : Source("the formula") {
    zox_render_array_init(&whole_);
    whole_.type = ZOX_RENDER_INT16;
    std::copy(size.begin(), size.end(), whole_.size);
  }

  const zox_render_array& whole() const override { return whole_; }

  PartArray take(const Part& part) const override {
    PartArray result;
    result.array = description(part);
    result.voxels.resize(size_t(part.size[0]) * size_t(part.size[1]) * size_t(part.size[2]) * 2);
    auto* voxel = reinterpret_cast<int16_t*>(result.voxels.data());
    for (int32_t z = part.first[2]; z < part.first[2] + part.size[2]; ++z)
      for (int32_t y = part.first[1]; y < part.first[1] + part.size[1]; ++y)
        for (int32_t x = part.first[0]; x < part.first[0] + part.size[0]; ++x) *voxel++ = formula(x, y, z);
    result.array.data = result.voxels.data();
    std::fill(std::begin(result.array.strides), std::end(result.array.strides), 0);
    return result;
  }

 private:
  zox_render_array whole_{};
};

}  // namespace

size_t type_bytes(int32_t type) {
  switch (type) {
    case ZOX_RENDER_UINT8:
    case ZOX_RENDER_INT8:
      return 1;
    case ZOX_RENDER_INT16:
    case ZOX_RENDER_UINT16:
      return 2;
    case ZOX_RENDER_FLOAT64:
      return 8;
    default:
      return 4;
  }
}

zox_render_array Source::description(const Part& part) const {
  zox_render_array array = whole();
  for (size_t axis = 0; axis < 3; ++axis) {
    array.whole_size[axis] = array.size[axis];
    array.size[axis] = part.size[axis];
    array.first[axis] = part.first[axis];
    array.owned_first[axis] = part.owned_first[axis];
    array.owned_size[axis] = part.owned_size[axis];
  }
  return array;
}

std::unique_ptr<Source> source_of(std::string name, input::Scan scan) {
  return std::make_unique<ScanSource>(std::move(name), std::move(scan));
}

std::unique_ptr<Source> formula_source(const Size& size) { return std::make_unique<FormulaSource>(size); }

int16_t formula(int32_t x, int32_t y, int32_t z) {
  // Along z it rises to one slice, which lies elsewhere for every column, and falls again.
  const int32_t peak = (x * 7 + y * 3) % 509;
  const int32_t distance = z > peak ? z - peak : peak - z;
  return static_cast<int16_t>((x * 31 + y * 17) % 8192 - 2 * distance);
}

}  // namespace zox::parts
