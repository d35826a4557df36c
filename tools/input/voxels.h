// Voxels as a header describes them, brought into a form that the rendering library takes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "format.h"

namespace zox::input {

enum class Stored { kU8, kS8, kU16, kS16, kU32, kS32, kU64, kS64, kF32, kF64 };
size_t stored_bytes(Stored type);

enum class Packing { kRaw, kDeflate, kText, kHex };

// Where the voxels of a volume lie.
struct VoxelSource {
  std::string header;              // the file that describes them
  std::vector<std::string> files;  // whose contents follow one another; one when packed
  Packing packing = Packing::kRaw;
  Stored type = Stored::kU8;
  bool swapped = false;      // the higher byte first
  uint64_t skip = 0;         // bytes before the voxels, of the unpacked file, in every file alike
  uint64_t packed_skip = 0;  // bytes before the packed stream
  bool at_end = false;       // instead of skip: the voxels are the end of the file
  uint64_t total = 0;        // voxels in all
  uint64_t first = 0;        // those wanted
  uint64_t count = 0;
};

// Fills in found.array.type and where voxel source.first is: the rest of `found` stays. 64-bit integers
// become 32-bit ones, or doubles where they do not fit.
void deliver(const VoxelSource& source, VoxelMemory& memory, Found& found);

// The wanted voxels with the lower byte first, of the type that is stored: source.count of them.
void read_voxels(const VoxelSource& source, std::byte* out);

// A volume that is read in blocks has one type before all of it is known: 64-bit integers become doubles.
int32_t block_type(Stored type);
// Copies voxels as that type, and gives the place behind them.
std::byte* copy_as_block(Stored type, const std::byte* from, size_t count, std::byte* to);

// Sets found.array.type for voxels that are at the beginning of the voxel memory, with 64-bit integers
// made shorter in place.
void take_voxels(Stored type, std::byte* voxels, uint64_t count, Found& found);

// Strides of packed voxels, x fastest, in voxels times the bytes of found.array.type.
void set_strides(Found& found, const int64_t (&voxels)[3]);

}  // namespace zox::input
