#include "nrrd.h"

#include <algorithm>
#include <filesystem>

#include "file.h"
#include "nrrd_axes.h"
#include "nrrd_voxels.h"
#include "text.h"

namespace zox::input {
namespace {

// x to the left, y to the back, z up, whatever the file's frame.
template <class Vector>
void turn(const std::string& space, Vector& vector) {
  if (space.starts_with("right-anterior-superior") || space.starts_with("ras")) vector[0] = -vector[0];
  if (space.starts_with("right-anterior-superior") || space.starts_with("ras") ||
      space.starts_with("left-anterior-superior") || space.starts_with("las"))
    vector[1] = -vector[1];
}

uint64_t voxels_of(const std::vector<NrrdAxis>& axes) {
  return static_cast<uint64_t>(axes.back().stride) * static_cast<uint64_t>(axes.back().size);
}

// Splits the file's axes into those of a volume and that of the volumes, if any.
struct Split {
  std::vector<NrrdAxis> space;
  NrrdAxis volumes{1, 0, false, {}};
};
Split split_axes(const std::string& path, std::vector<NrrdAxis> axes) {
  Split split;
  for (const NrrdAxis& axis : axes) {
    if (axis.spatial && split.space.size() < 3) {
      split.space.push_back(axis);
    } else if (axis.size > 1) {
      if (split.volumes.size > 1) refuse(quoted(path) + " has more than one axis beside those of space.");
      split.volumes = axis;
    }
  }
  while (!split.space.empty() && split.space.back().size == 1) split.space.pop_back();
  if (split.space.size() != 3)
    refuse(quoted(path) + " holds an image of " + std::to_string(split.space.size()) +
           " dimensions; a volume has 3.");
  return split;
}

}  // namespace

bool is_nrrd(const std::string& path) {
  const std::string extension = lower(std::filesystem::path(path).extension().string());
  return extension == ".nrrd" || extension == ".nhdr" || File(path).read(0, 7) == "NRRD000";
}

std::vector<std::string> nrrd_files(const std::string& path) {
  std::vector<std::string> files = {path};
  for (const std::string& file : nrrd_voxel_files(read_nrrd_header(path)))
    if (file != path) files.push_back(file);
  return files;
}

Found read_nrrd(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  const HeaderLines lines = read_nrrd_header(path);
  const std::vector<NrrdAxis> axes = read_nrrd_axes(lines);
  const Split split = split_axes(path, axes);
  Found found;
  found.array = empty_array();
  const std::string space = lower(lines.get("space"));
  for (size_t i = 0; i < 3; ++i) {
    found.array.size[i] = static_cast<int32_t>(split.space[i].size);
    std::copy(split.space[i].direction.begin(), split.space[i].direction.end(), found.array.axes[i]);
    turn(space, found.array.axes[i]);
  }
  if (const auto origin = first_nrrd_vector(lines, "space origin")) {
    std::copy(origin->begin(), origin->end(), found.array.origin);
    turn(space, found.array.origin);
  }
  check_geometry(path, found.array);
  VoxelSource source = nrrd_voxels(lines, voxels_of(axes));
  if (source.total % source.files.size() != 0) refuse_cut(path);
  const uint64_t volume = chosen_volume(path, static_cast<uint64_t>(split.volumes.size), options.volume);
  // From the first to the last voxel of the volume; others may lie between.
  source.first = volume * static_cast<uint64_t>(split.volumes.stride);
  source.count = 1;
  for (const NrrdAxis& axis : split.space)
    source.count += static_cast<uint64_t>(axis.size - 1) * static_cast<uint64_t>(axis.stride);
  deliver(source, memory, found);
  set_strides(found, {split.space[0].stride, split.space[1].stride, split.space[2].stride});
  return found;
}

Slice describe_nrrd_slice(const std::string& path) {
  const HeaderLines lines = read_nrrd_header(path);
  const std::vector<NrrdAxis> axes = read_nrrd_axes(lines);
  std::vector<NrrdAxis> space;
  for (const NrrdAxis& axis : axes) {
    if (!axis.spatial && axis.size > 1) refuse(quoted(path) + " holds more than one picture.");
    if (axis.spatial) space.push_back(axis);
  }
  if (space.size() < 2 || space.size() > 3 ||
      space.back().stride * space.back().size != space[0].size * space[1].size)
    refuse(quoted(path) + " is no picture of two dimensions, as a slice of a folder is.");
  Slice slice;
  slice.path = path;
  slice.columns = static_cast<int32_t>(space[0].size);
  slice.rows = static_cast<int32_t>(space[1].size);
  slice.source = nrrd_voxels(lines, voxels_of(axes));
  if (slice.source.files.size() != 1) refuse_cut(path);
  slice.type = slice.source.type;
  const std::string frame = lower(lines.get("space"));
  const bool tells = !lines.get("space directions").empty() || !lines.get("spacings").empty();
  for (size_t i = 0; tells && i < space.size(); ++i) {
    turn(frame, space[i].direction);
    slice.axes[i] = space[i].direction;
  }
  if (lines.get("space dimension") != "2") slice.origin = first_nrrd_vector(lines, "space origin");
  if (slice.origin) turn(frame, *slice.origin);
  return slice;
}

void read_nrrd_rows(const Slice& slice, int32_t first, int32_t count, std::byte* out) {
  VoxelSource source = slice.source;
  source.first = static_cast<uint64_t>(first) * static_cast<uint64_t>(slice.columns);
  source.count = static_cast<uint64_t>(count) * static_cast<uint64_t>(slice.columns);
  read_voxels(source, out);
}

}  // namespace zox::input
