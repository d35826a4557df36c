#include "nrrd_voxels.h"

#include <algorithm>
#include <map>

#include "file.h"
#include "text.h"

namespace zox::input {
namespace {

std::string data_file(const HeaderLines& lines) {
  const std::string name = lines.get("data file");
  return name.empty() ? lines.get("datafile") : name;
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

HeaderLines read_nrrd_header(const std::string& path) {
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

std::vector<std::string> nrrd_voxel_files(const HeaderLines& lines) {
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

VoxelSource nrrd_voxels(const HeaderLines& lines, uint64_t total) {
  VoxelSource source;
  source.header = lines.path;
  source.files = nrrd_voxel_files(lines);
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
  source.total = total;
  if (source.files.empty()) refuse_cut(lines.path);
  take_skips(lines, source);
  return source;
}

}  // namespace zox::input
