#include "nrrd.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "file.h"
#include "header_lines.h"
#include "text.h"
#include "voxels.h"

namespace zox::input {
namespace {

HeaderLines read_header(const std::string& path) {
  HeaderLines lines;
  lines.path = path;
  const std::string text = File(path).read(0, kMostHeader);
  if (!text.starts_with("NRRD000")) refuse(quoted(path) + " is no NRRD file, though its name says so.");
  size_t at = 0;
  next_line(text, at);
  while (at < text.size()) {
    const std::string_view line = next_line(text, at);
    if (line.empty()) break;
    const size_t colon = line.find(": ");
    if (line[0] == '#' || line.find(":=") < colon) continue;
    if (colon == std::string_view::npos) {
      if (line.find(':') == std::string_view::npos)
        refuse(quoted(path) + " is damaged: its header has a line that is no field.");
      continue;
    }
    lines.fields[lower(trimmed(line.substr(0, colon)))] = trimmed(line.substr(colon + 2));
    if (trimmed(line.substr(colon + 2)) == "LIST") break;
  }
  lines.bytes = at;
  lines.after = text.substr(at);
  return lines;
}

std::string data_file(const HeaderLines& lines) {
  const std::string name = lines.get("data file");
  return name.empty() ? lines.get("datafile") : name;
}

std::vector<std::string> voxel_files(const HeaderLines& lines) {
  const std::string name = data_file(lines);
  if (name.empty()) return {lines.path};
  const std::vector<std::string> words = words_of(name);
  if (words[0] == "LIST") {
    std::vector<std::string> files;
    for (size_t at = 0; at < lines.after.size();)
      if (const std::string file = trimmed(next_line(lines.after, at)); !file.empty())
        files.push_back(beside(lines.path, file));
    return files;
  }
  if (words.size() >= 4 && words[0].find('%') != std::string::npos) {
    const auto first = parse_number<int64_t>(words[1]);
    const auto last = parse_number<int64_t>(words[2]);
    const auto step = parse_number<int64_t>(words[3]);
    if (first && last && step) return numbered_files(lines, words[0], *first, *last, *step);
  }
  return {beside(lines.path, name)};
}

Stored stored_type(const HeaderLines& lines) {
  static const std::map<std::string, Stored> kTypes = {{"signed char", Stored::kS8},
                                                       {"int8", Stored::kS8},
                                                       {"int8_t", Stored::kS8},
                                                       {"uchar", Stored::kU8},
                                                       {"unsigned char", Stored::kU8},
                                                       {"uint8", Stored::kU8},
                                                       {"uint8_t", Stored::kU8},
                                                       {"short", Stored::kS16},
                                                       {"short int", Stored::kS16},
                                                       {"signed short", Stored::kS16},
                                                       {"signed short int", Stored::kS16},
                                                       {"int16", Stored::kS16},
                                                       {"int16_t", Stored::kS16},
                                                       {"ushort", Stored::kU16},
                                                       {"unsigned short", Stored::kU16},
                                                       {"unsigned short int", Stored::kU16},
                                                       {"uint16", Stored::kU16},
                                                       {"uint16_t", Stored::kU16},
                                                       {"int", Stored::kS32},
                                                       {"signed int", Stored::kS32},
                                                       {"int32", Stored::kS32},
                                                       {"int32_t", Stored::kS32},
                                                       {"uint", Stored::kU32},
                                                       {"unsigned int", Stored::kU32},
                                                       {"uint32", Stored::kU32},
                                                       {"uint32_t", Stored::kU32},
                                                       {"longlong", Stored::kS64},
                                                       {"long long", Stored::kS64},
                                                       {"long long int", Stored::kS64},
                                                       {"signed long long", Stored::kS64},
                                                       {"signed long long int", Stored::kS64},
                                                       {"int64", Stored::kS64},
                                                       {"int64_t", Stored::kS64},
                                                       {"ulonglong", Stored::kU64},
                                                       {"unsigned long long", Stored::kU64},
                                                       {"unsigned long long int", Stored::kU64},
                                                       {"uint64", Stored::kU64},
                                                       {"uint64_t", Stored::kU64},
                                                       {"float", Stored::kF32},
                                                       {"double", Stored::kF64}};
  const auto type = kTypes.find(lower(lines.get("type")));
  if (type == kTypes.end()) lines.refuse_field("type", "must be a type of plain numbers");
  return type->second;
}

// What one axis of the file means.
struct Axis {
  int64_t size = 0, stride = 0;
  bool spatial = true;
  std::array<double, 3> direction{};
};

// "(1,0,0)"; none: an axis that is no direction in space. Of a picture in a plane "(1,0)" will do.
std::array<double, 3> parse_vector(const HeaderLines& lines, const std::string& key, std::string word) {
  const bool in_plane = lines.get("space dimension") == "2";
  if (word.size() < 2 || word.front() != '(' || word.back() != ')')
    lines.refuse_field(key, "must be vectors");
  word = word.substr(1, word.size() - 2) + (in_plane ? ",0" : "");
  std::array<double, 3> vector{};
  size_t at = 0;
  for (double& part : vector) {
    const size_t comma = std::min(word.find(',', at), word.size());
    const auto number = parse_number<double>(trimmed(std::string_view(word).substr(at, comma - at)));
    if (!number) lines.refuse_field(key, "must be vectors of three numbers");
    part = *number;
    at = std::min(comma + 1, word.size());
  }
  if (at < word.size()) lines.refuse_field(key, "must be vectors of three numbers");
  return vector;
}

// The words of a field of vectors, in which blanks may follow commas.
std::vector<std::string> vector_words(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  int depth = 0;
  for (const char letter : text + " ") {
    depth += letter == '(' ? 1 : letter == ')' ? -1 : 0;
    const bool blank = letter == ' ' || letter == '\t';
    if (!blank) word += letter;
    if (depth <= 0 && (blank || letter == ')') && !word.empty()) words.push_back(std::exchange(word, ""));
  }
  return words;
}

void take_kinds(const HeaderLines& lines, std::vector<Axis>& axes) {
  const std::vector<std::string> kinds = words_of(lines.get("kinds"));
  if (kinds.empty()) return;
  if (kinds.size() != axes.size()) lines.refuse_field("kinds", "must be one for each axis");
  for (size_t i = 0; i < axes.size(); ++i) {
    const std::string kind = lower(kinds[i]);
    if (kind == "domain" || kind == "space" || kind == "???" || kind == "none") continue;
    axes[i].spatial = false;
    if (kind == "list" || kind == "time" || axes[i].size == 1 || kind == "stub" || kind == "scalar") continue;
    refuse(quoted(lines.path) + " holds " + (kind.find("color") == std::string::npos ? "vector" : "rgb") +
           " voxels; only plain numbers can be shown.");
  }
}

void take_directions(const HeaderLines& lines, std::vector<Axis>& axes) {
  const std::vector<std::string> words = vector_words(lines.get("space directions"));
  if (words.empty()) {
    std::vector<double> spacings(axes.size(), 1);
    const std::vector<std::string> given = words_of(lines.get("spacings"));
    if (!given.empty() && given.size() != axes.size())
      lines.refuse_field("spacings", "must be one for each axis");
    size_t space = 0;
    for (size_t i = 0; i < axes.size(); ++i) {
      const bool unknown = given.empty() || lower(given[i]) == "nan";
      const auto spacing = unknown ? 1.0 : parse_number<double>(given[i]);
      if (!spacing) lines.refuse_field("spacings", "must be numbers");
      if (axes[i].spatial && space < 3) axes[i].direction[space++] = *spacing;
    }
    return;
  }
  if (words.size() != axes.size()) lines.refuse_field("space directions", "must be one for each axis");
  for (size_t i = 0; i < axes.size(); ++i) {
    axes[i].spatial = lower(words[i]) != "none";
    if (axes[i].spatial) axes[i].direction = parse_vector(lines, "space directions", words[i]);
  }
}

std::vector<Axis> read_axes(const HeaderLines& lines) {
  const int64_t dimensions = whole_field(lines, "dimension", 1)[0];
  if (dimensions < 1 || dimensions > 16) lines.refuse_field("dimension", "must be 1 to 16");
  const std::vector<int64_t> sizes = whole_field(lines, "sizes", static_cast<size_t>(dimensions));
  std::vector<Axis> axes(sizes.size());
  int64_t stride = 1;
  for (size_t i = 0; i < axes.size(); ++i) {
    if (sizes[i] < 1 || sizes[i] > INT32_MAX) lines.refuse_field("sizes", "must be 1 or more each");
    axes[i].size = sizes[i];
    axes[i].stride = stride;
    if (__builtin_mul_overflow(stride, sizes[i], &stride)) refuse_cut(lines.path);
  }
  take_kinds(lines, axes);
  take_directions(lines, axes);
  return axes;
}

// x to the left, y to the back, z up, whatever the file's frame.
template <class Vector>
void turn(const std::string& space, Vector& vector) {
  if (space.starts_with("right-anterior-superior") || space.starts_with("ras")) vector[0] = -vector[0];
  if (space.starts_with("right-anterior-superior") || space.starts_with("ras") ||
      space.starts_with("left-anterior-superior") || space.starts_with("las"))
    vector[1] = -vector[1];
}

// Splits the file's axes into those of a volume and that of the volumes, if any.
struct Split {
  std::vector<Axis> space;
  Axis volumes{1, 0, false, {}};
};
Split split_axes(const std::string& path, std::vector<Axis> axes) {
  Split split;
  for (const Axis& axis : axes) {
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

VoxelSource source_of(const HeaderLines& lines, const std::vector<Axis>& axes) {
  VoxelSource source;
  source.header = lines.path;
  source.files = voxel_files(lines);
  source.type = stored_type(lines);
  const std::string encoding = lower(lines.get("encoding"));
  if (encoding == "raw")
    source.packing = Packing::kRaw;
  else if (encoding == "gzip" || encoding == "gz")
    source.packing = Packing::kDeflate;
  else if (encoding == "text" || encoding == "txt" || encoding == "ascii")
    source.packing = Packing::kText;
  else if (encoding == "hex")
    source.packing = Packing::kHex;
  else
    lines.refuse_field("encoding", "must be raw, gzip, text or hex");
  const std::string endian = lower(lines.get("endian"));
  if (!endian.empty() && endian != "little" && endian != "big")
    lines.refuse_field("endian", "must be little or big");
  source.swapped = endian == "big";
  if (endian.empty() && stored_bytes(source.type) > 1 && source.packing != Packing::kText)
    refuse(quoted(lines.path) + " does not say in which order the bytes of its voxels are (endian).");
  source.total = static_cast<uint64_t>(axes.back().stride) * static_cast<uint64_t>(axes.back().size);
  return source;
}

// Lines and bytes to leave out before the voxels.
void take_skips(const HeaderLines& lines, VoxelSource& source) {
  const bool inside = data_file(lines).empty();
  uint64_t at = inside ? lines.bytes : 0;
  const std::string line_skip =
      lines.get("line skip").empty() ? lines.get("lineskip") : lines.get("line skip");
  const std::string byte_skip =
      lines.get("byte skip").empty() ? lines.get("byteskip") : lines.get("byte skip");
  const auto skipped = parse_number<int64_t>(line_skip.empty() ? "0" : line_skip);
  const auto bytes = parse_number<int64_t>(byte_skip.empty() ? "0" : byte_skip);
  if (!skipped || *skipped < 0) lines.refuse_field("line skip", "must be a number of lines");
  if (!bytes || *bytes < -1) lines.refuse_field("byte skip", "must be a number of bytes");
  if (source.packing != Packing::kRaw && *bytes == -1)
    lines.refuse_field("byte skip", "must not be -1 unless the encoding is raw");
  if (*skipped > 0) {
    const std::string text = File(source.files[0], lines.path).read(at, kMostHeader);
    size_t end = 0;
    for (int64_t i = 0; i < *skipped; ++i) next_line(text, end);
    at += end;
  }
  source.at_end = *bytes == -1;
  // Of a packed stream, bytes are left out after it is unpacked.
  const bool packed = source.packing != Packing::kRaw;
  if (packed) source.packed_skip = at;
  source.skip = (packed ? 0 : at) + static_cast<uint64_t>(std::max<int64_t>(*bytes, 0));
}

}  // namespace

bool is_nrrd(const std::string& path) {
  const std::string extension = lower(std::filesystem::path(path).extension().string());
  return extension == ".nrrd" || extension == ".nhdr" || File(path).read(0, 7) == "NRRD000";
}

std::vector<std::string> nrrd_files(const std::string& path) {
  std::vector<std::string> files = {path};
  for (const std::string& file : voxel_files(read_header(path)))
    if (file != path) files.push_back(file);
  return files;
}

Found read_nrrd(const std::string& path, const ReadOptions& options, SharedMemory& memory) {
  const HeaderLines lines = read_header(path);
  const std::vector<Axis> axes = read_axes(lines);
  const Split split = split_axes(path, axes);
  Found found;
  found.array = empty_array();
  const std::string space = lower(lines.get("space"));
  for (size_t i = 0; i < 3; ++i) {
    found.array.size[i] = static_cast<int32_t>(split.space[i].size);
    std::copy(split.space[i].direction.begin(), split.space[i].direction.end(), found.array.axes[i]);
    turn(space, found.array.axes[i]);
  }
  if (const std::vector<std::string> words = vector_words(lines.get("space origin")); !words.empty()) {
    const std::array<double, 3> origin = parse_vector(lines, "space origin", words[0]);
    std::copy(origin.begin(), origin.end(), found.array.origin);
    turn(space, found.array.origin);
  }
  check_geometry(path, found.array);
  VoxelSource source = source_of(lines, axes);
  if (source.files.empty() || source.total % source.files.size() != 0) refuse_cut(path);
  take_skips(lines, source);
  const uint64_t volume = chosen_volume(path, static_cast<uint64_t>(split.volumes.size), options.volume);
  // From the first to the last voxel of the volume; others may lie between.
  source.first = volume * static_cast<uint64_t>(split.volumes.stride);
  source.count = 1;
  for (const Axis& axis : split.space)
    source.count += static_cast<uint64_t>(axis.size - 1) * static_cast<uint64_t>(axis.stride);
  deliver(source, memory, found);
  set_strides(found, {split.space[0].stride, split.space[1].stride, split.space[2].stride});
  return found;
}

Slice describe_nrrd_slice(const std::string& path) {
  const HeaderLines lines = read_header(path);
  const std::vector<Axis> axes = read_axes(lines);
  std::vector<Axis> space;
  for (const Axis& axis : axes) {
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
  slice.source = source_of(lines, axes);
  if (slice.source.files.size() != 1) refuse_cut(path);
  take_skips(lines, slice.source);
  slice.type = slice.source.type;
  const std::string frame = lower(lines.get("space"));
  const bool tells = !lines.get("space directions").empty() || !lines.get("spacings").empty();
  for (size_t i = 0; tells && i < space.size(); ++i) {
    turn(frame, space[i].direction);
    slice.axes[i] = space[i].direction;
  }
  const std::vector<std::string> origin = vector_words(lines.get("space origin"));
  if (!origin.empty() && lines.get("space dimension") != "2") {
    slice.origin = parse_vector(lines, "space origin", origin[0]);
    turn(frame, *slice.origin);
  }
  return slice;
}

void read_nrrd_rows(const Slice& slice, int32_t first, int32_t count, std::byte* out) {
  VoxelSource source = slice.source;
  source.first = static_cast<uint64_t>(first) * static_cast<uint64_t>(slice.columns);
  source.count = static_cast<uint64_t>(count) * static_cast<uint64_t>(slice.columns);
  read_voxels(source, out);
}

}  // namespace zox::input
