#include "meta_image.h"

#include <algorithm>
#include <filesystem>

#include "file.h"
#include "header_lines.h"
#include "text.h"
#include "voxels.h"

namespace zox::input {
namespace {

// The header ends with the line that says where the voxels are.
HeaderLines read_header(const std::string& path) {
  HeaderLines lines;
  lines.path = path;
  const std::string text = File(path).read(0, kMostHeader);
  size_t at = 0;
  while (at < text.size() && lines.get("ElementDataFile").empty()) {
    const std::string_view line = next_line(text, at);
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
      if (trimmed(line).empty()) continue;
      break;
    }
    lines.fields[lower(trimmed(line.substr(0, equals)))] = trimmed(line.substr(equals + 1));
  }
  lines.bytes = at;
  lines.after = text.substr(at);
  if (lines.get("ElementDataFile").empty())
    refuse(quoted(path) + " is damaged: its header does not say where the voxels are.");
  return lines;
}

std::vector<std::string> voxel_files(const HeaderLines& lines) {
  const std::string name = lines.get("ElementDataFile");
  const std::vector<std::string> words = words_of(name);
  if (lower(name) == "local") return {lines.path};
  std::vector<std::string> files;
  if (words[0] == "LIST") {
    for (size_t at = 0; at < lines.after.size();)
      if (const std::string file = trimmed(next_line(lines.after, at)); !file.empty())
        files.push_back(beside(lines.path, file));
    return files;
  }
  if (name.find('%') == std::string::npos) return {beside(lines.path, name)};
  // name%03d.raw first [last [step]]
  const auto number = [&](size_t i, int64_t missing) {
    if (i >= words.size()) return missing;
    const auto value = parse_number<int64_t>(words[i]);
    if (!value) lines.refuse_field("ElementDataFile", "does not say where the voxels are");
    return *value;
  };
  const std::vector<int64_t> sizes = whole_field(lines, "DimSize", 0);
  const int64_t first = number(1, 1);
  return numbered_files(lines, words[0], first, number(2, first + sizes.back() - 1), number(3, 1));
}

Stored stored_type(const HeaderLines& lines) {
  static const std::map<std::string, Stored> kTypes = {
      {"met_char", Stored::kS8},       {"met_ascii_char", Stored::kS8},  {"met_uchar", Stored::kU8},
      {"met_short", Stored::kS16},     {"met_ushort", Stored::kU16},     {"met_int", Stored::kS32},
      {"met_uint", Stored::kU32},      {"met_long", Stored::kS32},       {"met_ulong", Stored::kU32},
      {"met_long_long", Stored::kS64}, {"met_ulong_long", Stored::kU64}, {"met_float", Stored::kF32},
      {"met_double", Stored::kF64}};
  const auto type = kTypes.find(lower(lines.get("ElementType")));
  if (type == kTypes.end()) lines.refuse_field("ElementType", "must be a type of plain numbers");
  return type->second;
}

bool is_true(const HeaderLines& lines, const std::string& key) {
  const std::string value = lower(lines.get(key));
  if (value.empty() || value == "false" || value == "0" || value == "no") return false;
  if (value != "true" && value != "1" && value != "yes") lines.refuse_field(key, "must be True or False");
  return true;
}

// The first of some keys that is there; the last where none is.
std::string key_of(const HeaderLines& lines, std::initializer_list<const char*> keys) {
  std::string last;
  for (const char* key : keys) {
    last = key;
    if (!lines.get(key).empty()) break;
  }
  return last;
}

struct Sizes {
  std::vector<int64_t> all;
  size_t space = 0;  // of which as many are more than 1, or lie before one that is
  uint64_t volumes = 1;
};
Sizes read_sizes(const HeaderLines& lines) {
  const int64_t dimensions = whole_field(lines, "NDims", 1)[0];
  if (dimensions < 1 || dimensions > 10) lines.refuse_field("NDims", "must be 1 to 10");
  Sizes sizes;
  sizes.all = whole_field(lines, "DimSize", static_cast<size_t>(dimensions));
  sizes.space = sizes.all.size();
  while (sizes.space > 0 && sizes.all[sizes.space - 1] == 1) --sizes.space;
  if (sizes.space < 3)
    refuse(quoted(lines.path) + " holds an image of " + std::to_string(sizes.space) +
           " dimensions; a volume has 3.");
  for (size_t i = 0; i < sizes.all.size(); ++i) {
    if (sizes.all[i] < 1 || sizes.all[i] > INT32_MAX) lines.refuse_field("DimSize", "must be 1 or more each");
    if (i >= 3 && __builtin_mul_overflow(sizes.volumes, static_cast<uint64_t>(sizes.all[i]), &sizes.volumes))
      refuse_cut(lines.path);
  }
  return sizes;
}

// Row a of the matrix is the direction of axis a.
void take_geometry(const HeaderLines& lines, const Sizes& sizes, zox_render_array& array) {
  const size_t dimensions = sizes.all.size();
  const std::string spacing_key = key_of(lines, {"ElementSpacing", "ElementSize"});
  const std::string matrix_key = key_of(lines, {"TransformMatrix", "Orientation", "Rotation"});
  const std::string origin_key = key_of(lines, {"Offset", "Position", "Origin"});
  std::vector<double> spacing(dimensions, 1);
  std::vector<double> matrix(dimensions * dimensions, 0);
  std::vector<double> origin(dimensions, 0);
  for (size_t i = 0; i < dimensions; ++i) matrix[i * dimensions + i] = 1;
  if (!lines.get(spacing_key).empty()) spacing = real_field(lines, spacing_key, dimensions);
  if (!lines.get(matrix_key).empty()) matrix = real_field(lines, matrix_key, dimensions * dimensions);
  if (!lines.get(origin_key).empty()) origin = real_field(lines, origin_key, dimensions);
  for (size_t axis = 0; axis < 3; ++axis) {
    array.size[axis] = static_cast<int32_t>(sizes.all[axis]);
    array.origin[axis] = origin[axis];
    for (size_t row = 0; row < 3; ++row)
      array.axes[axis][row] = matrix[axis * dimensions + row] * spacing[axis];
  }
}

// Bytes before the voxels: behind the header, or as HeaderSize says; -1: the voxels are the file's end.
void take_skip(const HeaderLines& lines, VoxelSource& source) {
  const bool local = lower(lines.get("ElementDataFile")) == "local";
  const uint64_t begin = local ? lines.bytes : 0;
  source.packed_skip = source.packing == Packing::kRaw ? 0 : begin;
  source.skip = source.packing == Packing::kRaw ? begin : 0;
  if (lines.get("HeaderSize").empty() || local) return;
  const int64_t skip = whole_field(lines, "HeaderSize", 1)[0];
  if (skip < -1 || (skip == -1 && source.packing != Packing::kRaw))
    lines.refuse_field("HeaderSize", "must be a number of bytes");
  source.at_end = skip == -1;
  if (skip <= 0) return;
  (source.packing == Packing::kRaw ? source.skip : source.packed_skip) = static_cast<uint64_t>(skip);
}

VoxelSource source_of(const HeaderLines& lines) {
  VoxelSource source;
  source.header = lines.path;
  source.files = voxel_files(lines);
  source.type = stored_type(lines);
  source.swapped = is_true(lines, key_of(lines, {"ElementByteOrderMSB", "BinaryDataByteOrderMSB"}));
  const bool binary = lines.get("BinaryData").empty() || is_true(lines, "BinaryData");
  source.packing = !binary                            ? Packing::kText
                   : is_true(lines, "CompressedData") ? Packing::kDeflate
                                                      : Packing::kRaw;
  if (!lines.get("ElementNumberOfChannels").empty() &&
      whole_field(lines, "ElementNumberOfChannels", 1)[0] != 1)
    refuse(quoted(lines.path) + " holds vector voxels; only plain numbers can be shown.");
  take_skip(lines, source);
  return source;
}

}  // namespace

bool is_meta_image(const std::string& path) {
  const std::string extension = lower(std::filesystem::path(path).extension().string());
  return extension == ".mha" || extension == ".mhd";
}

std::vector<std::string> meta_image_files(const std::string& path) {
  std::vector<std::string> files = {path};
  for (const std::string& file : voxel_files(read_header(path)))
    if (file != path) files.push_back(file);
  return files;
}

Found read_meta_image(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  const HeaderLines lines = read_header(path);
  if (lower(lines.get("ObjectType")) != "image" && !lines.get("ObjectType").empty())
    lines.refuse_field("ObjectType", "must be Image");
  const Sizes sizes = read_sizes(lines);
  Found found;
  found.array = empty_array();
  take_geometry(lines, sizes, found.array);
  check_geometry(path, found.array);
  VoxelSource source = source_of(lines);
  source.count = voxel_count(found.array);
  source.first = source.count * chosen_volume(path, sizes.volumes, options.volume);
  if (__builtin_mul_overflow(source.count, sizes.volumes, &source.total)) refuse_cut(path);
  if (source.files.empty() || source.total % source.files.size() != 0) refuse_cut(path);
  deliver(source, memory, found);
  set_strides(found, {1, found.array.size[0], int64_t{found.array.size[0]} * found.array.size[1]});
  return found;
}

}  // namespace zox::input
