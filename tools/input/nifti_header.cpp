#include "nifti_header.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "text.h"

namespace zox::input {
namespace {

constexpr int32_t kBytes1 = 348;
constexpr int32_t kBytes2 = 540;

// Where the two versions keep the same things. Numbers named "real" are 32 or 64 bits long.
struct Places {
  size_t dimensions, dimension_bytes, datatype, voxel_sizes, offset, slope, intercept, qform, sform,
      code_bytes, quaternion, shift, rows, units, real_bytes;
};
constexpr Places kPlaces1 = {40, 2, 70, 76, 108, 112, 116, 252, 254, 2, 256, 268, 280, 123, 4};
constexpr Places kPlaces2 = {16, 8, 12, 104, 168, 176, 184, 344, 348, 4, 352, 376, 400, 500, 8};

class Fields {
 public:
  Fields(const std::string& bytes, bool swapped, bool second)
      : bytes_(bytes), swapped_(swapped), places(second ? kPlaces2 : kPlaces1) {}

  template <class Number>
  Number number(size_t at) const {
    std::array<char, sizeof(Number)> raw;
    std::memcpy(raw.data(), bytes_.data() + at, sizeof(Number));
    if (swapped_) std::reverse(raw.begin(), raw.end());
    Number result;
    std::memcpy(&result, raw.data(), sizeof(Number));
    return result;
  }
  int64_t whole(size_t at, size_t bytes) const {
    if (bytes == 2) return number<int16_t>(at);
    return bytes == 4 ? number<int32_t>(at) : number<int64_t>(at);
  }
  double real(size_t at, size_t index = 0) const {
    at += index * places.real_bytes;
    return places.real_bytes == 4 ? static_cast<double>(number<float>(at)) : number<double>(at);
  }
  int64_t code(size_t at) const { return whole(at, places.code_bytes); }

 private:
  const std::string& bytes_;
  bool swapped_;

 public:
  const Places places;
};

int32_t length_of(const std::string& bytes, bool swapped) {
  return Fields(bytes, swapped, false).number<int32_t>(0);
}

// NIfTI's frame counts to the right, to the front and up.
void set_axis(NiftiHeader& header, size_t axis, double right, double front, double up, double scale) {
  header.axes[axis] = {0.0 - right * scale, 0.0 - front * scale, up * scale};
}

void use_rows(const Fields& fields, double scale, NiftiHeader& header) {
  const size_t rows = fields.places.rows;
  for (size_t axis = 0; axis < 3; ++axis)
    set_axis(header, axis, fields.real(rows, axis), fields.real(rows, 4 + axis), fields.real(rows, 8 + axis),
             scale);
  header.origin = {0.0 - fields.real(rows, 3) * scale, 0.0 - fields.real(rows, 7) * scale,
                   fields.real(rows, 11) * scale};
}

std::array<double, 3> voxel_sizes(const Fields& fields) {
  std::array<double, 3> sizes;
  for (size_t axis = 0; axis < 3; ++axis) {
    const double size = std::abs(fields.real(fields.places.voxel_sizes, axis + 1));
    sizes[axis] = size == 0 ? 1 : size;
  }
  return sizes;
}

void use_quaternion(const Fields& fields, double scale, NiftiHeader& header) {
  const size_t at = fields.places.quaternion;
  double b = fields.real(at, 0);
  double c = fields.real(at, 1);
  double d = fields.real(at, 2);
  double a = 1 - (b * b + c * c + d * d);
  if (a < 1e-7) {  // a turn by 180 degrees, whose three numbers may be long by rounding
    const double length = std::sqrt(b * b + c * c + d * d);
    b /= length;
    c /= length;
    d /= length;
    a = 0;
  } else {
    a = std::sqrt(a);
  }
  const std::array<double, 3> size = voxel_sizes(fields);
  const double turned = fields.real(fields.places.voxel_sizes) < 0 ? -1 : 1;
  set_axis(header, 0, a * a + b * b - c * c - d * d, 2 * (b * c + a * d), 2 * (b * d - a * c),
           scale * size[0]);
  set_axis(header, 1, 2 * (b * c - a * d), a * a + c * c - b * b - d * d, 2 * (c * d + a * b),
           scale * size[1]);
  set_axis(header, 2, 2 * (b * d + a * c), 2 * (c * d - a * b), a * a + d * d - c * c - b * b,
           scale * size[2] * turned);
  const size_t shift = fields.places.shift;
  header.origin = {0.0 - fields.real(shift, 0) * scale, 0.0 - fields.real(shift, 1) * scale,
                   fields.real(shift, 2) * scale};
}

// The ways of placing a volume. Where a file gives sizes only, as all of Analyze do, the first voxel is
// taken to lie at the patient's right, at the back and below: so most programs have it.
void take_geometry(const Fields& fields, bool nifti, NiftiHeader& header) {
  const int64_t unit = fields.places.real_bytes == 4 ? fields.number<uint8_t>(fields.places.units)
                                                     : fields.code(fields.places.units);
  const double scale = !nifti ? 1 : (unit & 7) == 1 ? 1000 : (unit & 7) == 3 ? 0.001 : 1;
  if (nifti && fields.code(fields.places.sform) > 0) return use_rows(fields, scale, header);
  if (nifti && fields.code(fields.places.qform) > 0) return use_quaternion(fields, scale, header);
  header.oriented = false;
  const std::array<double, 3> size = voxel_sizes(fields);
  for (size_t axis = 0; axis < 3; ++axis) header.axes[axis][axis] = size[axis] * (axis == 1 ? -scale : scale);
}

void check_coordinates(const NiftiHeader& header, const std::string& path) {
  constexpr double kMost = 1e9;
  bool sound = true;
  for (size_t row = 0; row < 3; ++row) {
    sound = sound && std::abs(header.origin[row]) <= kMost;
    for (const auto& axis : header.axes) sound = sound && std::abs(axis[row]) <= kMost;
  }
  if (!sound) refuse(quoted(path) + " is damaged: its scanner coordinates are beyond all bounds.");
}

void take_offset(const Fields& fields, const std::string& path, NiftiHeader& header) {
  constexpr double kMost = 1e15;
  const double offset = fields.places.real_bytes == 4 ? fields.real(fields.places.offset)
                                                      : static_cast<double>(fields.whole(168, 8));
  if (!(offset >= 0 && offset <= kMost))
    refuse(quoted(path) + " is damaged: its header does not say where the voxels are.");
  header.voxel_offset = static_cast<uint64_t>(offset);
}

}  // namespace

bool is_nifti_header(const std::string& bytes) {
  if (bytes.size() < size_t{kBytes1}) return false;
  for (const bool swapped : {false, true}) {
    const int32_t length = length_of(bytes, swapped);
    if (length == kBytes1 || (length == kBytes2 && bytes.size() >= size_t{kBytes2})) return true;
  }
  return false;
}

NiftiHeader parse_nifti_header(const std::string& bytes, const std::string& path) {
  if (!is_nifti_header(bytes))
    refuse(quoted(path) + " is no NIfTI file, nor does it hold an Analyze header.");
  NiftiHeader header;
  header.swapped = length_of(bytes, false) != kBytes1 && length_of(bytes, false) != kBytes2;
  const bool second = length_of(bytes, header.swapped) == kBytes2;
  const Fields fields(bytes, header.swapped, second);
  const char* magic = bytes.data() + (second ? 4 : 344);
  const bool nifti = magic[0] == 'n' && (magic[1] == '+' || magic[1] == 'i');
  header.separate = !nifti || magic[1] == 'i';
  for (size_t i = 0; i < 8; ++i)
    header.dimensions[i] = fields.whole(fields.places.dimensions + i * fields.places.dimension_bytes,
                                        fields.places.dimension_bytes);
  header.datatype = fields.number<int16_t>(fields.places.datatype);
  take_offset(fields, path, header);
  const double slope = fields.real(fields.places.slope);
  const double intercept = fields.real(fields.places.intercept);
  if (nifti && std::isfinite(slope) && std::isfinite(intercept) && slope != 0) {
    header.slope = slope;
    header.intercept = intercept;
  }
  take_geometry(fields, nifti, header);
  check_coordinates(header, path);
  return header;
}

}  // namespace zox::input
