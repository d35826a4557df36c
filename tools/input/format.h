// What the reader of a format gives: a description, and voxels in memory or where they lie in a file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scan.h"
#include "voxel_memory.h"

namespace zox::input {

// A scan without its voxels' addresses: voxel (0, 0, 0) is `offset` bytes behind the beginning of the
// voxel memory, or of `file` where that is not empty. array.strides are set.
struct Found {
  zox_render_array array{};
  std::optional<Window> window;
  std::vector<std::string> notes;
  std::vector<double> positions;
  std::string file;
  uint64_t offset = 0;
  bool in_blocks = false;  // nothing is read yet: Format::read_block does
};

// Voxels first .. first + size - 1.
struct Block {
  std::array<int32_t, 3> first{}, size{};
};

struct Format {
  const char* name;
  // By name and first bytes.
  bool (*recognizes)(const std::string& path);
  // The files that belong to the one that is named, itself first.
  std::vector<std::string> (*files)(const std::string& path);
  // Throws Failure, or any other exception when the file is damaged.
  Found (*read)(const std::string& path, const ReadOptions& options, VoxelMemory& memory);
  // The voxels of a block of the volume that read() has described, packed. Null where read() reads all.
  void (*read_block)(const std::string& path, const ReadOptions& options, const zox_render_array& whole,
                     const Block& block, std::byte* out) = nullptr;
};

// The format of a file or folder. Throws Failure when there is none.
const Format& format_of(const std::string& path);

// An array of the library's defaults.
zox_render_array empty_array();

// Bytes of a voxel of a type ZOX_RENDER_...; 0 for what is no type.
size_t type_bytes(int32_t type);

[[noreturn]] inline void refuse(const std::string& sentence) { throw Failure(sentence); }
[[noreturn]] void refuse_cut(const std::string& path);

// What read() gives of a format that can be read in blocks: with ReadOptions::leave_in_file the description
// alone, otherwise all voxels.
Found deliver_blocks(const std::string& path, const ReadOptions& options, Found found,
                     decltype(Format::read_block) read_block, VoxelMemory& memory);

// The number of the volume to read of a file that holds `count`. Throws Failure.
uint64_t chosen_volume(const std::string& path, uint64_t count, int wanted);

// Voxels of an array of sizes above 0. Throws Failure where 64 bits do not hold their number.
uint64_t voxel_count(const zox_render_array& array);

// Refuses sizes and axes that no volume has: fewer than 2 voxels along an axis, axes that hardly span a
// volume.
void check_geometry(const std::string& path, const zox_render_array& array);

}  // namespace zox::input
