#include "scan.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <new>
#include <span>
#include <system_error>
#include <utility>

#include "available_memory.h"
#include "child_process.h"
#include "file.h"
#include "format.h"
#include "message.h"
#include "readers.h"
#include "text.h"

namespace zox::input {
namespace fs = std::filesystem;
namespace {

using Reading = std::function<Found(VoxelMemory&)>;

// In the child: everything that depends on what files hold.
Given read_and_tell(const std::string& path, const Reading& read, uint64_t limit) {
  VoxelMemory memory(limit);
  try {
    std::string message = pack_found(read(memory));
    return {std::move(message), memory.take()};
  } catch (const Failure& failure) {
    return pack_failure(failure.what());
  } catch (const std::bad_alloc&) {
    return pack_failure("There is not enough memory to read " + quoted(path) + ": " + std::to_string(limit) +
                        " bytes are available.");
  } catch (const std::exception&) {
    return pack_failure(quoted(path) +
                        " cannot be read: it is damaged, cut short or not what its name says.");
  }
}

[[noreturn]] void refuse_without_answer(const std::string& path, const ReadOptions& options,
                                        const Answer& answer) {
  if (answer.timed_out || answer.signal == SIGXCPU) {
    std::string seconds = std::to_string(options.seconds);
    seconds.erase(seconds.find_last_not_of('0') + 1);
    if (seconds.back() == '.') seconds.pop_back();
    refuse(quoted(path) + " cannot be read: after " + seconds +
           " seconds reading it had not come to an end.");
  }
  if (answer.signal == SIGINT || answer.signal == SIGTERM)
    refuse("Reading " + quoted(path) + " was interrupted.");
  refuse(quoted(path) + " cannot be read: it is damaged, and reading it ended in a crash.");
}

// The bytes from the lowest to behind the highest voxel; false where 64 bits do not hold them.
bool find_extent(const zox_render_array& array, int64_t& low, int64_t& high) {
  low = 0;
  high = static_cast<int64_t>(type_bytes(array.type));
  for (size_t axis = 0; axis < 3; ++axis) {
    int64_t reach = 0;
    if (__builtin_mul_overflow(array.strides[axis], int64_t{array.size[axis]} - 1, &reach)) return false;
    int64_t& end = reach < 0 ? low : high;
    if (__builtin_add_overflow(end, reach, &end)) return false;
  }
  return true;
}

bool is_finite(const double (&vector)[3]) {
  return std::isfinite(vector[0]) && std::isfinite(vector[1]) && std::isfinite(vector[2]);
}

// A child that a file has damaged may say anything.
bool is_sound(const Found& found, uint64_t bytes) {
  const zox_render_array& array = found.array;
  const size_t voxel = type_bytes(array.type);
  if (voxel == 0 || found.offset % voxel != 0 || array.data || array.slices || array.positions) return false;
  for (size_t axis = 0; axis < 3; ++axis)
    if (array.size[axis] < 2 || array.strides[axis] % static_cast<int64_t>(voxel) != 0 ||
        !is_finite(array.axes[axis]))
      return false;
  if (!found.positions.empty() && found.positions.size() != static_cast<size_t>(array.size[2])) return false;
  if (!is_finite(array.origin) || !std::isfinite(array.slope) || array.slope == 0 ||
      !std::isfinite(array.intercept))
    return false;
  int64_t low = 0;
  int64_t high = 0;
  if (!find_extent(array, low, high)) return false;
  if (found.in_blocks) return true;
  return found.offset <= bytes && static_cast<uint64_t>(-low) <= found.offset &&
         static_cast<uint64_t>(high) <= bytes - found.offset;
}

void set_spacing(const std::string& path, const ReadOptions& options, Found& found) {
  if (!options.spacing) return;
  if (!found.positions.empty())
    refuse(quoted(path) + " has slices of uneven places, which no other spacing can stand for.");
  for (size_t axis = 0; axis < 3; ++axis) {
    auto& vector = found.array.axes[axis];
    const double length = std::hypot(vector[0], vector[1], vector[2]);
    for (double& part : vector) part *= (*options.spacing)[axis] / length;
  }
}

Scan scan_of(const std::string& path, Found found, const ReadOptions& options, Mapping block) {
  Scan scan;
  const bool left = options.leave_in_file && !found.file.empty();
  const uint64_t bytes = found.file.empty() ? bytes_of(block).size() : File(found.file).size();
  if (!is_sound(found, bytes)) refuse_cut(path);
  set_spacing(path, options, found);
  scan.array = found.array;
  if (found.in_blocks) {
    scan.blocks = Blocks{path, options};
  } else if (left) {
    scan.file = found.file;
    scan.offset = found.offset;
  } else {
    scan.memory = found.file.empty() ? std::move(block) : File(found.file).map();
    scan.array.data = static_cast<const std::byte*>(scan.memory.get()) + found.offset;
  }
  scan.window = found.window;
  scan.notes = std::move(found.notes);
  scan.positions = std::move(found.positions);
  if (!scan.positions.empty()) scan.array.positions = scan.positions.data();
  return scan;
}

// Reads in a child; what came of it goes to `take`, with the memory of the voxels.
template <class Take>
auto with_child(const std::string& path, const ReadOptions& options, const Reading& read, Take take) try {
  const uint64_t available = std::min(available_memory(), uint64_t{1} << 60);
  const uint64_t limit = options.memory_limit ? std::min(options.memory_limit, available) : available;
  // Voxels may take all of the limit; what the readers work with comes on top.
  constexpr uint64_t kReaders = uint64_t{256} << 20;
  Answer answer =
      run_in_child({limit + kReaders, options.seconds}, [&] { return read_and_tell(path, read, limit); });
  auto found = unpack(answer.bytes);
  if (!found) refuse_without_answer(path, options, answer);
  return take(std::move(*found), std::move(answer.block));
} catch (const std::bad_alloc&) {
  refuse("There is not enough memory to read " + quoted(path) + ".");
} catch (const std::system_error& error) {
  refuse(quoted(path) + " cannot be read: the system refused a process for it (" +
         std::strerror(error.code().value()) + ").");
}

}  // namespace

Scan read_scan(const std::string& path, const ReadOptions& options) {
  const auto read = [&](VoxelMemory& memory) { return format_of(path).read(path, options, memory); };
  return with_child(path, options, read, [&](Found found, Mapping block) {
    return scan_of(path, std::move(found), options, std::move(block));
  });
}

Mapping read_block(const Blocks& blocks, const zox_render_array& array, const std::array<int32_t, 3>& first,
                   const std::array<int32_t, 3>& size) {
  uint64_t bytes = type_bytes(array.type);
  for (const int32_t length : size) bytes *= static_cast<uint64_t>(length);
  const auto read = [&](VoxelMemory& memory) {
    std::byte* const out = memory.allocate(bytes, blocks.path);
    format_of(blocks.path).read_block(blocks.path, blocks.options, array, {first, size}, out);
    return Found{};
  };
  return with_child(blocks.path, blocks.options, read, [&](const Found&, Mapping block) {
    if (bytes_of(block).size() < bytes) refuse_cut(blocks.path);
    return block;
  });
}

void map_voxels(Scan& scan) {
  if (scan.blocks) {
    const auto& size = scan.array.size;
    scan.memory = read_block(*scan.blocks, scan.array, {0, 0, 0}, {size[0], size[1], size[2]});
    scan.array.data = scan.memory.get();
    scan.blocks.reset();
  }
  if (scan.file.empty()) return;
  scan.memory = File(scan.file).map();
  scan.array.data = static_cast<const std::byte*>(scan.memory.get()) + scan.offset;
  scan.file.clear();
}

std::vector<std::string> list_series(const std::string& path, const ReadOptions& options) {
  const auto read = [&](VoxelMemory&) {
    if (!is_dicom(path)) refuse(quoted(path) + " is no DICOM file or folder, which alone hold series.");
    Found found;
    found.notes = readers_for(path).dicom_series(path, options);
    return found;
  };
  return with_child(path, options, read, [](Found found, const Mapping&) { return std::move(found.notes); });
}

namespace {

// In the child's answer: a letter, and the series behind it.
constexpr char kNoDicom = 'n', kUnknown = '?', kKnown = '=';

std::string packed(const SeriesOf& of) {
  if (!of.is_dicom) return {kNoDicom};
  return of.uid ? kKnown + *of.uid : std::string{kUnknown};
}

SeriesOf unpacked(const std::string& text) {
  if (text.empty() || text[0] == kNoDicom) return {};
  if (text[0] == kUnknown) return {true, {}};
  return {true, text.substr(1)};
}

// The large readers are loaded for DICOM files alone; not even the opening of anything else may wait.
SeriesOf find_series_of(const std::string& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error) || !is_dicom(path)) return {};
  return readers_for(path).dicom_series_of(path);
}

// What a reader does not survive is found by halves.
void add_series_of(std::span<const std::string> paths, const ReadOptions& options,
                   std::vector<SeriesOf>& all) {
  const auto read = [&](VoxelMemory&) {
    Found found;
    for (const std::string& path : paths) found.notes.push_back(packed(find_series_of(path)));
    return found;
  };
  try {
    const auto texts = with_child(paths[0], options, read,
                                  [](Found found, const Mapping&) { return std::move(found.notes); });
    if (texts.size() != paths.size()) throw Failure("");
    for (const std::string& text : texts) all.push_back(unpacked(text));
  } catch (const Failure&) {
    if (paths.size() == 1) return all.push_back({true, {}});
    add_series_of(paths.first(paths.size() / 2), options, all);
    add_series_of(paths.subspan(paths.size() / 2), options, all);
  }
}

}  // namespace

std::vector<SeriesOf> series_of(const std::vector<std::string>& paths, const ReadOptions& options) {
  std::vector<SeriesOf> all;
  if (!paths.empty()) add_series_of(paths, options, all);
  return all;
}

std::vector<std::string> files_of(const std::string& path) { return format_of(path).files(path); }

}  // namespace zox::input
