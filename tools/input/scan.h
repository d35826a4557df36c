// Volumes from files, read by a process of its own: whatever a file holds, it cannot hurt the caller.
#pragma once

#include <zox_render.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zox::input {

// Why an input cannot be had: one sentence that names the file.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Values shown from black to white, as a file asks for them.
struct Window {
  double center, width;
};

struct ReadOptions {
  uint64_t memory_limit = 0;   // bytes that reading may take; 0: what the system has
  double seconds = 60;         // after which reading is given up
  int volume = -1;             // of a file that holds several, from 0; -1: there must be one only
  bool leave_in_file = false;  // voxels that lie in a file as they are: only told where (Scan::file)
  std::string series;          // of a DICOM folder, its number in the list; empty: the largest
  // A list of DICOM files, of which these alone are read; empty: what the path stands for.
  std::vector<std::string> list;
  std::string dataset;  // of an HDF5 file, its path in there; empty: there must be one only
  // Lengths of a voxel's edges in millimetres, instead of those that the file gives.
  std::optional<std::array<double, 3>> spacing;
};

// Unmaps memory when its owner goes.
struct Unmap {
  size_t bytes = 0;
  void operator()(void* memory) const;
};
using Mapping = std::unique_ptr<void, Unmap>;

// A volume that is read block by block, such as a folder of slices.
struct Blocks {
  std::string path;
  ReadOptions options;
};

// A volume as it was read. `array` points into the other members, so that the scan must live as long as
// the array is used; moving the scan leaves its array's addresses good.
struct Scan {
  zox_render_array array{};
  std::optional<Window> window;
  std::vector<std::string> notes;  // sentences for the user, such as what was left out
  std::vector<double> positions;   // array.positions, where the slices are uneven
  Mapping memory;
  // With ReadOptions::leave_in_file, where the voxels lie so: the file, and the byte of voxel (0, 0, 0);
  // array.data is null then.
  std::string file;
  uint64_t offset = 0;
  std::optional<Blocks> blocks;  // or what reads them, where they do not lie in one file
};

// Reads a file or a folder. The child process is made by fork, which leaves it none of the caller's other
// threads: they may run, but hold nothing that reading needs. Throws Failure.
Scan read_scan(const std::string& path, const ReadOptions& options);

// The voxels of a block of a volume that array describes, packed; by a child process, as read_scan.
Mapping read_block(const Blocks& blocks, const zox_render_array& array, const std::array<int32_t, 3>& first,
                   const std::array<int32_t, 3>& size);

// Maps or reads voxels that were left in their files, so that array.data is set as without
// ReadOptions::leave_in_file. Throws Failure.
void map_voxels(Scan& scan);

// The series of a folder of DICOM files, a line each: number, modality, slices, spacing, description.
// By a child process, as read_scan. Throws Failure.
std::vector<std::string> list_series(const std::string& path, const ReadOptions& options);

// What a file says of the DICOM series that it belongs to.
struct SeriesOf {
  bool is_dicom = false;
  std::optional<std::string> uid;  // none where the header cannot be read
};

// One for each path, by a child process, as read_scan. Never throws for what files hold.
std::vector<SeriesOf> series_of(const std::vector<std::string>& paths, const ReadOptions& options);

// The built-in head: ellipsoids and two vessels, in signed 16-bit; docs/zox-mip.md lists the shapes.
Scan make_phantom();

// Every file that belongs to an input: a header's voxel files too. Nothing may be written over them.
std::vector<std::string> files_of(const std::string& path);

}  // namespace zox::input
