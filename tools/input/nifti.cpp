#include "nifti.h"

#include <filesystem>

#include "file.h"
#include "inflate.h"
#include "nifti_header.h"
#include "text.h"

namespace zox::input {
namespace {

namespace fs = std::filesystem;

constexpr size_t kLeastHeaderBytes = 348;
constexpr uint64_t kMostPacked = 1032;  // deflate packs at most so many bytes to one

// The name without .gz, and the extension of what is left, in small letters.
std::string kind_of(const std::string& path) {
  fs::path name(path);
  if (lower(name.extension().string()) == ".gz") name.replace_extension();
  return lower(name.extension().string());
}

bool is_packed(const File& file) { return file.read(0, 2) == "\x1F\x8B"; }

std::string head_of(const std::string& path, size_t bytes) {
  const File file(path);
  if (!is_packed(file)) return file.read(0, bytes);
  const Mapping mapping = file.map();
  const std::string head = inflate_head(bytes_of(mapping), bytes);
  if (head.size() < kLeastHeaderBytes) refuse_cut(path);
  return head;
}

// The other file of a pair, in letters as large as those of this one, packed or not.
std::string partner(const std::string& path, const std::string& extension) {
  fs::path plain(path);
  if (lower(plain.extension().string()) == ".gz") plain.replace_extension();
  const std::string own = plain.extension().string();
  std::string wanted = extension;
  if (own != lower(own))
    for (char& letter : wanted) letter = static_cast<char>(std::toupper(letter));
  const std::string name = plain.replace_extension(wanted).string();
  for (const char* suffix : {"", ".gz", ".GZ"})
    if (std::error_code error; fs::exists(name + suffix, error)) return name + suffix;
  return name;
}

Stored stored_type(int datatype, const std::string& path) {
  switch (datatype) {
    case 2:
      return Stored::kU8;
    case 4:
      return Stored::kS16;
    case 8:
      return Stored::kS32;
    case 16:
      return Stored::kF32;
    case 64:
      return Stored::kF64;
    case 256:
      return Stored::kS8;
    case 512:
      return Stored::kU16;
    case 768:
      return Stored::kU32;
    case 1024:
      return Stored::kS64;
    case 1280:
      return Stored::kU64;
    case 32:
    case 1792:
    case 2048:
      refuse(quoted(path) + " holds complex voxels; only plain numbers can be shown.");
    case 128:
    case 2304:
      refuse(quoted(path) + " holds rgb voxels; only plain numbers can be shown.");
    default:
      refuse(quoted(path) + " holds voxels of an unsupported type (NIfTI's number " +
             std::to_string(datatype) + ").");
  }
}

// The sizes, and the number of volumes.
uint64_t take_sizes(const NiftiHeader& header, const std::string& path, zox_render_array& array) {
  int64_t last = header.dimensions[0];
  if (last < 1 || last > 7) refuse(quoted(path) + " is damaged: its header gives no number of dimensions.");
  while (last > 0 && header.dimensions[static_cast<size_t>(last)] == 1) --last;
  if (last < 3)
    refuse(quoted(path) + " holds an image of " + std::to_string(last) + " dimensions; a volume has 3.");
  uint64_t volumes = 1;
  for (size_t i = 1; i <= static_cast<size_t>(last); ++i) {
    const int64_t size = header.dimensions[i];
    if (size < 1 || size > INT32_MAX)
      refuse(quoted(path) + " is damaged: its header gives impossible sizes.");
    if (i <= 3)
      array.size[i - 1] = static_cast<int32_t>(size);
    else if (__builtin_mul_overflow(volumes, static_cast<uint64_t>(size), &volumes))
      refuse_cut(path);
  }
  return volumes;
}

VoxelSource source_of(const NiftiHeader& header, const std::string& path, const std::string& voxel_file,
                      const zox_render_array& array, uint64_t volumes, uint64_t volume) {
  VoxelSource source;
  source.header = path;
  source.files = {voxel_file};
  source.type = stored_type(header.datatype, path);
  source.swapped = header.swapped;
  source.skip = header.voxel_offset;
  source.count = voxel_count(array);
  source.first = source.count * volume;
  const File file(voxel_file, voxel_file == path ? "" : path);
  source.packing = is_packed(file) ? Packing::kDeflate : Packing::kRaw;
  const uint64_t most = source.packing == Packing::kRaw ? file.size() : file.size() * kMostPacked;
  if (__builtin_mul_overflow(source.count, volumes, &source.total) || source.skip > most ||
      source.total > (most - source.skip) / stored_bytes(source.type))
    refuse_cut(path);
  return source;
}

// One file, or the two of a pair.
bool is_pair(const std::string& kind) { return kind == ".hdr" || kind == ".img"; }

}  // namespace

bool is_nifti(const std::string& path) {
  const std::string kind = kind_of(path);
  return kind == ".nii" || is_pair(kind);
}

std::vector<std::string> nifti_files(const std::string& path) {
  const std::string kind = kind_of(path);
  if (!is_pair(kind)) return {path};
  return {path, partner(path, kind == ".hdr" ? ".img" : ".hdr")};
}

Found read_nifti(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  const bool pair = is_pair(kind_of(path));
  const std::string header_file = pair && kind_of(path) == ".img" ? partner(path, ".hdr") : path;
  const NiftiHeader header = parse_nifti_header(head_of(header_file, kNiftiHeaderBytes), header_file);
  if (header.separate && !pair)
    refuse(quoted(path) + " is the header of a pair of files, which must be named .hdr and .img.");
  Found found;
  found.array = empty_array();
  const uint64_t volumes = take_sizes(header, path, found.array);
  for (size_t axis = 0; axis < 3; ++axis) {
    for (size_t row = 0; row < 3; ++row) found.array.axes[axis][row] = header.axes[axis][row];
    found.array.origin[axis] = header.origin[axis];
  }
  check_geometry(path, found.array);
  if (!header.oriented)
    found.notes.push_back(
        quoted(path) +
        " does not say how it lies in the patient: its axes are taken to lead to the left, to "
        "the front and up.");
  const std::string voxel_file = header.separate ? partner(header_file, ".img") : header_file;
  const uint64_t volume = chosen_volume(path, volumes, options.volume);
  deliver(source_of(header, path, voxel_file, found.array, volumes, volume), memory, found);
  set_strides(found, {1, found.array.size[0], int64_t{found.array.size[0]} * found.array.size[1]});
  found.array.slope = header.slope;
  found.array.intercept = header.intercept;
  return found;
}

}  // namespace zox::input
