#include "hdf5_volume.h"

#include <algorithm>
#include <cmath>

#include "file.h"
#include "hdf5_library.h"
#include "text.h"

namespace zox::input {
namespace {

// H5F_ACC_RDONLY without the calls of the library that the macro makes.
constexpr unsigned kReadOnly = 0;

// What is opened is never closed: the process ends when it has read.
class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path), hdf5_(load_hdf5(path)) {
    const File readable(path);
    file_ = hdf5_.open_file(path.c_str(), kReadOnly, H5P_DEFAULT);
    if (file_ < 0) refuse(quoted(path) + " is damaged or cut short: HDF5 cannot open it.");
    if (hdf5_.has_link(file_, "minc-2.0", H5P_DEFAULT) > 0)
      refuse(quoted(path) + " is a MINC file, which cannot be read: convert it to NIfTI.");
  }

  // The dataset of this name, or the only volume.
  void choose(const std::string& wanted);
  void describe(Found& found);
  void read(const Block& block, std::byte* out);
  bool tells_spacing() const { return tells_spacing_; }

 private:
  bool is_volume(hid_t dataset) const;
  std::vector<hsize_t> sizes_of(hid_t dataset) const;
  void take_type();
  void take_spacing(zox_render_array& array);
  void check_filters() const;
  std::string name() const { return quoted(dataset_name_) + " in " + quoted(path_); }

  std::string path_, dataset_name_;
  Hdf5 hdf5_;
  hid_t file_ = -1, dataset_ = -1;
  std::vector<hsize_t> sizes_;
  std::array<size_t, 3> axes_{};  // those of z, y and x
  int32_t type_ = 0;
  hid_t memory_type_ = -1;
  bool tells_spacing_ = false;
};

// The axes of space, slowest first; empty where there are not three. Others are 1 long.
std::vector<size_t> axes_of_space(const std::vector<hsize_t>& sizes) {
  std::vector<size_t> axes;
  for (size_t i = 0; i < sizes.size(); ++i)
    if (sizes[i] > 1) axes.push_back(i);
  if (axes.size() != 3) axes.clear();
  return axes;
}

std::vector<hsize_t> Reader::sizes_of(hid_t dataset) const {
  const hid_t space = hdf5_.space_of(dataset);
  const int dimensions = hdf5_.dimensions(space);
  std::vector<hsize_t> sizes(static_cast<size_t>(std::max(dimensions, 0)));
  if (!sizes.empty()) hdf5_.sizes(space, sizes.data(), nullptr);
  return sizes;
}

bool Reader::is_volume(hid_t dataset) const {
  const H5T_class_t kind = hdf5_.class_of(hdf5_.type_of(dataset));
  return (kind == H5T_INTEGER || kind == H5T_FLOAT) && !axes_of_space(sizes_of(dataset)).empty();
}

herr_t collect(hid_t, const char* name, const H5O_info_t* info, void* names) {
  if (info->type == H5O_TYPE_DATASET) static_cast<std::vector<std::string>*>(names)->push_back(name);
  return 0;
}

void Reader::choose(const std::string& wanted) {
  std::vector<std::string> names;
  if (wanted.empty()) {
    if (hdf5_.visit(file_, H5_INDEX_NAME, H5_ITER_NATIVE, collect, &names) < 0) refuse_cut(path_);
    std::erase_if(names, [&](const std::string& each) {
      const hid_t dataset = hdf5_.open_dataset(file_, each.c_str(), H5P_DEFAULT);
      const bool keep = dataset >= 0 && is_volume(dataset);
      if (dataset >= 0) hdf5_.close_dataset(dataset);
      return !keep;
    });
    if (names.empty()) refuse(quoted(path_) + " holds no dataset of numbers in three dimensions.");
    if (names.size() > 1)
      refuse(quoted(path_) + " holds " + std::to_string(names.size()) + " volumes, such as /" + names[0] +
             " and /" + names[1] + "; choose one by --dataset.");
  }
  dataset_name_ = wanted.empty() ? std::string("/").append(names[0]) : wanted;
  dataset_ = hdf5_.open_dataset(file_, dataset_name_.c_str(), H5P_DEFAULT);
  if (dataset_ < 0) refuse(quoted(path_) + " holds no dataset " + quoted(dataset_name_) + ".");
}

void Reader::take_type() {
  struct Row {
    H5T_class_t kind;
    bool sign;
    size_t bytes;
    int32_t type;
    hid_t in_memory;
  };
  const Row rows[] = {{H5T_INTEGER, false, 1, ZOX_RENDER_UINT8, hdf5_.kUINT8},
                      {H5T_INTEGER, true, 1, ZOX_RENDER_INT8, hdf5_.kINT8},
                      {H5T_INTEGER, false, 2, ZOX_RENDER_UINT16, hdf5_.kUINT16},
                      {H5T_INTEGER, true, 2, ZOX_RENDER_INT16, hdf5_.kINT16},
                      {H5T_INTEGER, false, 4, ZOX_RENDER_UINT32, hdf5_.kUINT32},
                      {H5T_INTEGER, true, 4, ZOX_RENDER_INT32, hdf5_.kINT32},
                      {H5T_INTEGER, false, 8, ZOX_RENDER_FLOAT64, hdf5_.kDOUBLE},
                      {H5T_INTEGER, true, 8, ZOX_RENDER_FLOAT64, hdf5_.kDOUBLE},
                      {H5T_FLOAT, true, 2, ZOX_RENDER_FLOAT32, hdf5_.kFLOAT},
                      {H5T_FLOAT, true, 4, ZOX_RENDER_FLOAT32, hdf5_.kFLOAT},
                      {H5T_FLOAT, true, 8, ZOX_RENDER_FLOAT64, hdf5_.kDOUBLE}};
  const hid_t stored = hdf5_.type_of(dataset_);
  const H5T_class_t kind = hdf5_.class_of(stored);
  const bool sign = kind == H5T_FLOAT || (kind == H5T_INTEGER && hdf5_.sign_of(stored) == H5T_SGN_2);
  for (const Row& row : rows)
    if (row.kind == kind && row.sign == sign && row.bytes == hdf5_.type_size(stored)) {
      type_ = row.type;
      memory_type_ = row.in_memory;
      return;
    }
  refuse(name() + " holds no voxels that are plain numbers.");
}

// element_size_um: how far voxels are apart along z, y and x, in micrometres.
void Reader::take_spacing(zox_render_array& array) {
  if (hdf5_.has_attribute(dataset_, "element_size_um") <= 0) return;
  const hid_t attribute = hdf5_.open_attribute(dataset_, "element_size_um", H5P_DEFAULT);
  double micrometres[3] = {};
  if (hdf5_.points(hdf5_.attribute_space(attribute)) != 3 ||
      hdf5_.read_attribute(attribute, hdf5_.kDOUBLE, micrometres) < 0)
    refuse(name() + " has an attribute element_size_um that is not three numbers.");
  for (size_t axis = 0; axis < 3; ++axis) {
    const double length = micrometres[2 - axis];
    if (!std::isfinite(length) || length <= 0)
      refuse(name() + " has an attribute element_size_um that is no size of a voxel.");
    array.axes[axis][axis] = length / 1000;
  }
  tells_spacing_ = true;
}

void Reader::check_filters() const {
  const hid_t properties = hdf5_.properties_of(dataset_);
  for (int i = 0; i < hdf5_.filters(properties); ++i) {
    unsigned flags = 0, settings = 0;
    size_t count = 0;
    char label[64] = "";
    const H5Z_filter_t filter = hdf5_.filter(properties, static_cast<unsigned>(i), &flags, &count, nullptr,
                                             sizeof label, label, &settings);
    if (hdf5_.has_filter(filter) <= 0)
      refuse(name() + " is packed by the filter " + std::to_string(filter) + " (" + label +
             "), for which HDF5 has no plug-in here.");
  }
}

void Reader::describe(Found& found) {
  sizes_ = sizes_of(dataset_);
  take_type();
  const std::vector<size_t> axes = axes_of_space(sizes_);
  if (axes.empty()) {
    std::string text;
    for (const hsize_t size : sizes_) text += (text.empty() ? "" : " x ") + std::to_string(size);
    refuse(name() + " is no volume of three dimensions: its sizes are " + (text.empty() ? "none" : text) +
           ".");
  }
  std::copy(axes.begin(), axes.end(), axes_.begin());
  for (size_t axis = 0; axis < 3; ++axis) {
    if (sizes_[axes_[2 - axis]] > INT32_MAX) refuse_cut(path_);
    found.array.size[axis] = static_cast<int32_t>(sizes_[axes_[2 - axis]]);
  }
  found.array.type = type_;
  take_spacing(found.array);
  check_filters();
}

void Reader::read(const Block& block, std::byte* out) {
  std::vector<hsize_t> first(sizes_.size(), 0), size(sizes_.size(), 1);
  for (size_t axis = 0; axis < 3; ++axis) {
    first[axes_[2 - axis]] = static_cast<hsize_t>(block.first[axis]);
    size[axes_[2 - axis]] = static_cast<hsize_t>(block.size[axis]);
  }
  const hid_t in_file = hdf5_.space_of(dataset_);
  const hid_t in_memory = hdf5_.make_space(static_cast<int>(size.size()), size.data(), nullptr);
  if (hdf5_.select(in_file, H5S_SELECT_SET, first.data(), nullptr, size.data(), nullptr) < 0 ||
      hdf5_.read(dataset_, memory_type_, in_memory, in_file, H5P_DEFAULT, out) < 0)
    refuse(quoted(path_) + " is damaged or cut short: HDF5 cannot read " + quoted(dataset_name_) + ".");
}

}  // namespace

bool is_hdf5(const std::string& path) {
  using namespace std::string_literals;
  return File(path).read(0, 8) == "\x89HDF\r\n\x1a\n"s;
}

Found read_hdf5(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  Reader reader(path);
  reader.choose(options.dataset);
  Found found;
  found.array = empty_array();
  reader.describe(found);
  check_geometry(path, found.array);
  chosen_volume(path, 1, options.volume);
  if (!reader.tells_spacing() && !options.spacing)
    found.notes.push_back(quoted(path) +
                          " does not say how large its voxels are: they are taken for cubes of 1 mm; "
                          "--spacing X,Y,Z tells it.");
  return deliver_blocks(path, options, std::move(found), read_hdf5_block, memory);
}

void read_hdf5_block(const std::string& path, const ReadOptions& options, const zox_render_array&,
                     const Block& block, std::byte* out) {
  Reader reader(path);
  reader.choose(options.dataset);
  Found found;
  found.array = empty_array();
  reader.describe(found);
  for (size_t axis = 0; axis < 3; ++axis)
    if (block.first[axis] + block.size[axis] > found.array.size[axis])
      refuse(quoted(path) + " has changed while it was read.");
  reader.read(block, out);
}

}  // namespace zox::input
