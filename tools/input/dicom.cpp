#include "dicom.h"

#include <cstring>
#include <filesystem>
#include <map>

#include "dicom/pixels.h"
#include "dicom/study.h"
#include "text.h"

namespace zox::input {
namespace fs = std::filesystem;
namespace {

void append(std::vector<std::string>& notes, const std::vector<std::string>& more) {
  notes.insert(notes.end(), more.begin(), more.end());
}

void describe(const dicom::Arrangement& stack, const dicom::VoxelType& type, Found& found) {
  const dicom::Frame& first = stack.frames[0];
  found.array = empty_array();
  found.array.type = type.render_type;
  found.array.size[0] = first.columns;
  found.array.size[1] = first.rows;
  found.array.size[2] = static_cast<int32_t>(stack.frames.size());
  for (size_t axis = 0; axis < 3; ++axis) {
    found.array.origin[axis] = stack.origin[axis];
    for (size_t part = 0; part < 3; ++part) found.array.axes[axis][part] = stack.axes[axis][part];
  }
  const auto voxel = static_cast<int64_t>(type.bytes);
  found.array.strides[0] = voxel;
  found.array.strides[1] = voxel * first.columns;
  found.array.strides[2] = voxel * first.columns * first.rows;
  found.array.slope = type.slope;
  found.array.intercept = type.intercept;
  found.positions = stack.positions;
  if (first.window) found.window = Window{first.window->center, first.window->width};
}

// Every file is decoded once, however many of its frames the volume takes.
void read_voxels(const dicom::Arrangement& stack, const dicom::VoxelType& type, std::byte* voxels) {
  const dicom::Frame& first = stack.frames[0];
  const size_t slice = size_t(first.columns) * size_t(first.rows) * type.bytes;
  std::map<std::string, std::vector<size_t>> by_file;
  for (size_t s = 0; s < stack.frames.size(); ++s) by_file[stack.frames[s].path].push_back(s);
  for (const auto& [path, slices] : by_file) try {
      const dicom::PixelFile file(stack.frames[slices[0]]);
      for (const size_t s : slices) file.copy(stack.frames[s], type, voxels + s * slice);
    } catch (const std::runtime_error& error) {
      refuse(quoted(path) + " " + error.what() + ".");
    }
}

template <class Action>
auto telling(const std::string& path, Action action) try {
  return action();
} catch (const Failure&) {
  throw;
} catch (const fs::filesystem_error& error) {
  refuse(quoted(path) + " cannot be searched: " + error.code().message() + ".");
} catch (const std::runtime_error& error) {
  refuse(error.what());
}

Found read(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  chosen_volume(path, 1, options.volume);
  Found found;
  const dicom::Study study = dicom::read_study(path, options.list);
  const dicom::Series& series = dicom::choose(study, options.series, found.notes);
  const dicom::Arrangement stack = dicom::arrange(series);
  const dicom::VoxelType type = dicom::common_type(stack.frames);
  describe(stack, type, found);
  check_geometry(path, found.array);
  append(found.notes, stack.notes);
  append(found.notes, study.notes());
  read_voxels(stack, type, memory.allocate(voxel_count(found.array) * type.bytes, path));
  return found;
}

}  // namespace

std::vector<std::string> dicom_files(const std::string& path) {
  return telling(path, [&] { return dicom::files_of_study(path); });
}

Found read_dicom(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  return telling(path, [&] { return read(path, options, memory); });
}

std::vector<std::string> dicom_series(const std::string& path, const ReadOptions& options) {
  return telling(path, [&] {
    std::vector<std::string> lines;
    for (const dicom::Series& series : dicom::read_study(path, options.list).series)
      lines.push_back(dicom::describe(series, static_cast<int>(lines.size()) + 1));
    return lines;
  });
}

SeriesOf dicom_series_of(const std::string& path) {
  SeriesOf result;
  const dicom::FileContent content = dicom::read_frames(path);
  result.is_dicom = content.is_dicom;
  if (content.is_dicom && !content.damaged) result.uid = content.series_uid;
  return result;
}

}  // namespace zox::input
