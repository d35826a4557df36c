// Where the parts of a volume come from: a file, of which no more is mapped than a part needs, or memory.
#pragma once

#include <input/scan.h>

#include <memory>
#include <string>
#include <vector>

#include "cut.h"

namespace zox::parts {

// A part's array: of the library's description, with the voxels' memory.
struct PartArray {
  zox_render_array array{};
  input::Mapping memory;          // mapped or read for this part alone
  std::vector<std::byte> voxels;  // or made for it
};

class Source {
 public:
  virtual ~Source() = default;
  // The whole without voxels. positions are the source's.
  virtual const zox_render_array& whole() const = 0;
  // Throws input::Failure.
  virtual PartArray take(const Part& part) const = 0;
  const std::string& name() const { return name_; }

 protected:
  explicit Source(std::string name) : name_(std::move(name)) {}
  // The description of a part, still without voxels.
  zox_render_array description(const Part& part) const;

 private:
  std::string name_;
};

// Bytes of a voxel of a type ZOX_RENDER_...
size_t type_bytes(int32_t type);

// A scan that has been read: from its file if it was left there, else from its memory.
std::unique_ptr<Source> source_of(std::string name, input::Scan scan);

// A volume of 16-bit numbers that a formula gives, made part by part: for tests of sizes that no memory
// holds. Along z column (x, y) has its largest value, (31 x + 17 y) mod 8192, in slice (7 x + 3 y) mod 509.
int16_t formula(int32_t x, int32_t y, int32_t z);
std::unique_ptr<Source> formula_source(const Size& size);

}  // namespace zox::parts
