#include <itkImageIOBase.h>
#include <itkImageIOFactory.h>
// Written by the build: makes every format of the ITK found known to the factory.
#include <itkImageIOFactoryRegisterManager.h>

#include <cmath>
#include <filesystem>
#include <optional>

#include "complete.h"
#include "convert.h"
#include "failure.h"
#include "quiet_stderr.h"
#include "volume.h"

namespace zox_mip {
namespace {

namespace fs = std::filesystem;
using ImageIO = itk::ImageIOBase;

std::string quoted(const std::string& path) { return "'" + path + "'"; }

void check_is_file(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) fail("There is no file " + quoted(path) + ".");
  if (!fs::is_regular_file(status)) fail(quoted(path) + " is not a file.");
}

// ITK's NIfTI reader opens x.nii when it is asked for x.nii.gz and both are there.
void check_no_shadow(const std::string& path) {
  const fs::path file(path);
  if (file.extension() != ".gz") return;
  const fs::path shadow = fs::path(file).replace_extension();
  std::error_code error;
  if (fs::exists(shadow, error))
    fail(quoted(shadow.string()) + " lies beside " + quoted(path) +
         " and would be read in its place; move one of them away.");
}

std::optional<FileType> file_type(ImageIO::IOComponentEnum component) {
  using Component = itk::IOComponentEnum;
  const auto integer = [](size_t bytes, bool with_sign) {
    switch (bytes) {
      case 1:
        return with_sign ? FileType::kS8 : FileType::kU8;
      case 2:
        return with_sign ? FileType::kS16 : FileType::kU16;
      case 4:
        return with_sign ? FileType::kS32 : FileType::kU32;
      default:
        return with_sign ? FileType::kS64 : FileType::kU64;
    }
  };
  switch (component) {
    case Component::UCHAR:
      return FileType::kU8;
    case Component::CHAR:
      return FileType::kS8;
    case Component::USHORT:
      return FileType::kU16;
    case Component::SHORT:
      return FileType::kS16;
    case Component::UINT:
      return FileType::kU32;
    case Component::INT:
      return FileType::kS32;
    case Component::ULONG:
      return integer(sizeof(long), false);
    case Component::LONG:
      return integer(sizeof(long), true);
    case Component::ULONGLONG:
      return FileType::kU64;
    case Component::LONGLONG:
      return FileType::kS64;
    case Component::FLOAT:
      return FileType::kF32;
    case Component::DOUBLE:
      return FileType::kF64;
    default:
      return std::nullopt;
  }
}

// Axes of length one at the end (a time series of one volume) count for nothing.
unsigned true_dimensions(const ImageIO& io) {
  unsigned dimensions = io.GetNumberOfDimensions();
  while (dimensions > 0 && io.GetDimensions(dimensions - 1) == 1) --dimensions;
  return dimensions;
}

void take_geometry(const ImageIO& io, const std::string& path, Volume& volume) {
  const unsigned dimensions = true_dimensions(io);
  if (dimensions != 3)
    fail(quoted(path) + " holds an image of " + std::to_string(dimensions) + " dimensions; a volume has 3.");
  for (unsigned axis = 0; axis < 3; ++axis) {
    const auto size = io.GetDimensions(axis);
    if (size < 2 || size > kMaxSize)
      fail(quoted(path) + " is " + std::to_string(size) + " voxels long along its axis " +
           std::to_string(axis) + "; 2 to " + std::to_string(kMaxSize) + " are possible.");
    volume.size[axis] = static_cast<int>(size);
    const std::vector<double> direction = io.GetDirection(axis);
    for (unsigned row = 0; row < 3; ++row)
      volume.axes[axis][static_cast<int>(row)] = direction[row] * io.GetSpacing(axis);
  }
  // A share of the volume of a box with edges as long. Axes leaning more than this would take a step of
  // 64 voxels beyond the range of the library's fixed point.
  constexpr double kLeastShare = 0.1;
  const double box = length(volume.axes[0]) * length(volume.axes[1]) * length(volume.axes[2]);
  const double det = std::abs(determinant(volume.axes));
  if (!std::isfinite(box) || det == 0 || !(det >= kLeastShare * box))
    fail(quoted(path) + " has axes or spacings that hardly span a volume.");
}

bool is_nifti(const ImageIO& io) { return io.GetNameOfClass() == std::string("NiftiImageIO"); }

ImageIO::Pointer open_image(const std::string& path) {
  const ImageIO::Pointer io =
      itk::ImageIOFactory::CreateImageIO(path.c_str(), itk::CommonEnums::IOFileMode::ReadMode);
  if (!io) fail(quoted(path) + " is in no format that ITK reads.");
  // Formats of flat pictures. The PNG reader ends the process when the file is damaged.
  const std::string reader = io->GetNameOfClass();
  if (reader == "PNGImageIO" || reader == "JPEGImageIO" || reader == "BMPImageIO")
    fail(quoted(path) + " is a picture of 2 dimensions; a volume has 3.");
  if (is_nifti(*io) && !is_nifti_sound(path))
    fail(quoted(path) + " is damaged: its scanner coordinates are beyond all bounds.");
  if (reader == "MetaImageIO" && !is_meta_image_sound(path))
    fail(quoted(path) + " is damaged: its header does not say where the voxels are.");
  io->SetFileName(path);
  io->ReadImageInformation();
  return io;
}

FileType scalar_type(const ImageIO& io, const std::string& path) {
  if (io.GetNumberOfComponents() != 1 || io.GetPixelType() != itk::IOPixelEnum::SCALAR)
    fail(quoted(path) + " holds " + ImageIO::GetPixelTypeAsString(io.GetPixelType()) +
         " voxels; only plain numbers can be shown.");
  const std::optional<FileType> type = file_type(io.GetComponentType());
  if (!type) fail(quoted(path) + " holds voxels of an unsupported type.");
  return *type;
}

std::unique_ptr<std::byte[]> read_voxels(ImageIO& io, const std::string& path, size_t count, FileType type) {
  const std::string cut =
      quoted(path) + " is damaged or cut short: it does not hold the voxels that its header speaks of.";
  const size_t bytes = count * file_type_bytes(type);
  if (!can_hold(path, bytes)) fail(cut);
  if (is_nifti(io) && !is_nifti_complete(path)) fail(cut);
  itk::ImageIORegion region(io.GetNumberOfDimensions());
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    region.SetIndex(axis, 0);
    region.SetSize(axis, io.GetDimensions(axis));
  }
  io.SetIORegion(region);
  auto raw = std::make_unique_for_overwrite<std::byte[]>(bytes);
  if (!reads_to_the_end([&] { io.Read(raw.get()); }, raw.get(), bytes, file_type_bytes(type))) fail(cut);
  return raw;
}

}  // namespace

Volume read_volume(const std::string& path) {
  check_is_file(path);
  check_no_shadow(path);
  // The format readers print as they like; what has to be said is said once, by the caller.
  const QuietStderr quiet;
  try {
    Volume volume;
    const ImageIO::Pointer io = open_image(path);
    const FileType type = scalar_type(*io, path);
    take_geometry(*io, path, volume);
    store_voxels(read_voxels(*io, path, volume.count(), type), type, path, volume);
    return volume;
  } catch (const Failure&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    fail(quoted(path) + " cannot be read: it is damaged, cut short or not what its name says.");
  }
}

}  // namespace zox_mip
