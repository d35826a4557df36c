#include "slices.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>

#include "nrrd.h"
#include "readers.h"
#include "slice_names.h"
#include "text.h"

namespace zox::input {
namespace {

using Vector = std::array<double, 3>;

bool is_tiff_name(const std::string& path) {
  return lower(std::filesystem::path(path).extension().string()).starts_with(".tif");
}

Slice describe_slice(const std::string& path) {
  return is_tiff_name(path) ? readers_for(path).describe_tiff_slice(path) : describe_nrrd_slice(path);
}

std::string size_of(const Slice& slice) {
  return std::to_string(slice.columns) + " x " + std::to_string(slice.rows);
}

void check_alike(const Slice& first, const Slice& slice) {
  if (slice.columns != first.columns || slice.rows != first.rows)
    refuse(quoted(slice.path) + " has " + size_of(slice) + " voxels, where " + quoted(first.path) + " has " +
           size_of(first) + "; the slices of a volume are alike.");
  if (slice.type != first.type)
    refuse(quoted(slice.path) + " has voxels of another type than " + quoted(first.path) +
           "; the slices of a volume are alike.");
}

Vector difference(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

// From a slice to the next: by their places, if the files tell them, or as the file says of its thickness.
Vector step_of(const Slice& first, const Slice& last, size_t count) {
  if (first.origin && last.origin) {
    Vector step = difference(*last.origin, *first.origin);
    for (double& part : step) part /= static_cast<double>(count - 1);
    if (step != Vector{0, 0, 0}) return step;
  }
  return first.axes[2].value_or(Vector{0, 0, 1});
}

void take_axis(const Vector& from, double (&axis)[3]) { std::copy(from.begin(), from.end(), axis); }

// A slice that tells its place must lie in the row of the others.
void check_place(const Slice& first, const Slice& slice, const zox_render_array& whole, int32_t number) {
  if (!first.origin || !slice.origin || first.origin == slice.origin) return;
  double off = 0, step = 0;
  for (size_t i = 0; i < 3; ++i) {
    const double place = (*first.origin)[i] + number * whole.axes[2][i];
    off = std::hypot(off, (*slice.origin)[i] - place);
    step = std::hypot(step, whole.axes[2][i]);
  }
  constexpr double kTolerance = 0.02;  // of the distance of slices
  if (off > kTolerance * step)
    refuse(quoted(slice.path) + " lies elsewhere than its place among evenly spaced slices.");
}

Found describe(const SliceFiles& files, const std::string& path, const ReadOptions& options) {
  const Slice first = describe_slice(files.paths.front());
  const Slice last = describe_slice(files.paths.back());
  check_alike(first, last);
  if (files.paths.size() > INT32_MAX) refuse_cut(path);
  Found found;
  found.array = empty_array();
  found.array.type = block_type(first.type);
  found.array.size[0] = first.columns;
  found.array.size[1] = first.rows;
  found.array.size[2] = static_cast<int32_t>(files.paths.size());
  for (size_t axis = 0; axis < 2; ++axis)
    if (first.axes[axis]) take_axis(*first.axes[axis], found.array.axes[axis]);
  take_axis(step_of(first, last, files.paths.size()), found.array.axes[2]);
  if (first.origin) std::copy(first.origin->begin(), first.origin->end(), found.array.origin);
  check_geometry(path, found.array);
  chosen_volume(path, 1, options.volume);
  if (files.passed_over > 0)
    found.notes.push_back(std::to_string(files.passed_over) +
                          (files.passed_over == 1 ? " file is" : " files are") + " no TIFF or NRRD and " +
                          (files.passed_over == 1 ? "was" : "were") + " passed over.");
  if (!first.axes[0] && !options.spacing)
    found.notes.push_back(quoted(path) +
                          " does not say how large its voxels are: they are taken for cubes of 1 mm; "
                          "--spacing X,Y,Z tells it.");
  return found;
}

}  // namespace

bool is_slice_folder(const std::string& path) {
  return std::filesystem::is_directory(path) && holds_slices(path);
}

std::vector<std::string> slice_folder_files(const std::string& path) {
  std::vector<std::string> files;
  for (const std::string& slice : slice_files(path).paths) {
    files.push_back(slice);
    if (is_tiff_name(slice)) continue;
    for (const std::string& file : nrrd_files(slice))
      if (file != slice) files.push_back(file);
  }
  return files;
}

Found read_slices(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  return deliver_blocks(path, options, describe(slice_files(path), path, options), read_slices_block, memory);
}

void read_slices_block(const std::string& path, const ReadOptions&, const zox_render_array& whole,
                       const Block& block, std::byte* out) {
  const SliceFiles files = slice_files(path);
  if (files.paths.size() != static_cast<size_t>(whole.size[2]))
    refuse(quoted(path) + " has changed while it was read.");
  const Slice first = describe_slice(files.paths.front());
  const size_t stored = stored_bytes(first.type), row = static_cast<size_t>(first.columns) * stored;
  const auto rows = std::make_unique_for_overwrite<std::byte[]>(row * static_cast<size_t>(block.size[1]));
  const size_t columns = static_cast<size_t>(block.size[0]);
  for (int32_t z = block.first[2]; z < block.first[2] + block.size[2]; ++z) {
    const Slice slice = describe_slice(files.paths[static_cast<size_t>(z)]);
    check_alike(first, slice);
    check_place(first, slice, whole, z);
    is_tiff_name(slice.path)
        ? readers_for(slice.path).read_tiff_rows(slice, block.first[1], block.size[1], rows.get())
        : read_nrrd_rows(slice, block.first[1], block.size[1], rows.get());
    for (int32_t y = 0; y < block.size[1]; ++y) {
      const std::byte* from =
          rows.get() + static_cast<size_t>(y) * row + static_cast<size_t>(block.first[0]) * stored;
      out = copy_as_block(first.type, from, columns, out);
    }
  }
}

}  // namespace zox::input
