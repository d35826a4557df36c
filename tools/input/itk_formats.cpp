#include "itk_formats.h"

#include <itkBioRadImageIO.h>
#include <itkGiplImageIO.h>
#include <itkLSMImageIO.h>
#include <itkMRCImageIO.h>
#include <itkStimulateImageIO.h>
#include <itkTIFFImageIO.h>
#include <itkVTKImageIO.h>

#include <algorithm>
#include <cstring>

#include "file.h"
#include "header_lines.h"
#include "inflate.h"
#include "itk_names.h"
#include "text.h"
#include "tiff_pages.h"
#include "voxels.h"

namespace zox::input {
namespace {

using ImageIO = itk::ImageIOBase;

ImageIO::Pointer reader_of(const std::string& path) {
  const std::string head = File(path).read(0, 16);
  const std::string kind = kind_of(path);
  if (is_vtk(head)) return itk::VTKImageIO::New().GetPointer();
  if (is_tiff(head) && kind == ".lsm") return itk::LSMImageIO::New().GetPointer();
  if (is_tiff(head)) return itk::TIFFImageIO::New().GetPointer();
  if (kind == ".gipl") return itk::GiplImageIO::New().GetPointer();
  if (kind == ".mrc" || kind == ".rec") return itk::MRCImageIO::New().GetPointer();
  if (kind == ".pic") return itk::BioRadImageIO::New().GetPointer();
  if (kind == ".spr") return itk::StimulateImageIO::New().GetPointer();
  return nullptr;
}

Stored stored_type(const ImageIO& io, const std::string& path) {
  using Component = itk::IOComponentEnum;
  if (io.GetNumberOfComponents() != 1 || io.GetPixelType() != itk::IOPixelEnum::SCALAR)
    refuse(quoted(path) + " holds " + ImageIO::GetPixelTypeAsString(io.GetPixelType()) +
           " voxels; only plain numbers can be shown.");
  switch (io.GetComponentType()) {
    case Component::UCHAR:
      return Stored::kU8;
    case Component::CHAR:
      return Stored::kS8;
    case Component::USHORT:
      return Stored::kU16;
    case Component::SHORT:
      return Stored::kS16;
    case Component::UINT:
      return Stored::kU32;
    case Component::INT:
      return Stored::kS32;
    case Component::ULONG:
    case Component::ULONGLONG:
      return Stored::kU64;
    case Component::LONG:
    case Component::LONGLONG:
      return Stored::kS64;
    case Component::FLOAT:
      return Stored::kF32;
    case Component::DOUBLE:
      return Stored::kF64;
    default:
      refuse(quoted(path) + " holds voxels of an unsupported type.");
  }
}

void take_geometry(const ImageIO& io, const std::string& path, zox_render_array& array) {
  unsigned dimensions = io.GetNumberOfDimensions();
  while (dimensions > 0 && io.GetDimensions(dimensions - 1) == 1) --dimensions;
  if (dimensions != 3)
    refuse(quoted(path) + " holds an image of " + std::to_string(dimensions) +
           " dimensions; a volume has 3.");
  for (unsigned axis = 0; axis < 3; ++axis) {
    const auto size = io.GetDimensions(axis);
    if (size > INT32_MAX) refuse_cut(path);
    array.size[axis] = static_cast<int32_t>(size);
    array.origin[axis] = io.GetOrigin(axis);
    const std::vector<double> direction = io.GetDirection(axis);
    for (unsigned row = 0; row < 3; ++row) array.axes[axis][row] = direction[row] * io.GetSpacing(axis);
  }
  check_geometry(path, array);
}

// The readers pass over missing voxels in silence: what they leave of two fillings was not in the file.
void read_twice(ImageIO& io, const std::string& path, std::byte* out, uint64_t bytes) {
  const auto scratch = std::make_unique_for_overwrite<std::byte[]>(bytes);
  std::memset(scratch.get(), 0x5A, bytes);
  io.Read(scratch.get());
  std::memset(out, 0xA5, bytes);
  io.Read(out);
  if (std::memcmp(out, scratch.get(), bytes) != 0) refuse_cut(path);
}

// Of a VTK file written as text, missing numbers are read as zeros.
void check_vtk_text(const std::string& path, uint64_t count) {
  const File file(path);
  const std::string head = file.read(0, kMostHeader);
  size_t at = 0;
  next_line(head, at);
  next_line(head, at);
  if (!lower(trimmed(next_line(head, at))).starts_with("ascii")) return;
  const size_t table = head.find("LOOKUP_TABLE", at);
  if (table == std::string::npos) refuse_cut(path);
  at = table;
  next_line(head, at);
  const Mapping mapping = file.map();
  const Bytes text = bytes_of(mapping).subspan(at);
  uint64_t words = 0;
  bool blank = true;
  for (const std::byte byte : text) {
    const char letter = static_cast<char>(byte);
    const bool now = letter == ' ' || (letter >= '\t' && letter <= '\r');
    words += blank && !now;
    blank = now;
  }
  if (words < count) refuse_cut(path);
}

void read_all(ImageIO& io, const std::string& path, VoxelMemory& memory, Found& found) {
  const Stored type = stored_type(io, path);
  const uint64_t count = voxel_count(found.array);
  const uint64_t bytes = count * stored_bytes(type);
  constexpr uint64_t kMostPacked = 1032;  // deflate packs at most so many bytes to one
  if (bytes / kMostPacked > File(path).size()) refuse_cut(path);
  check_vtk_text(path, count);
  itk::ImageIORegion region(io.GetNumberOfDimensions());
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    region.SetIndex(axis, 0);
    region.SetSize(axis, io.GetDimensions(axis));
  }
  io.SetIORegion(region);
  std::byte* const out = memory.allocate(bytes, path);
  read_twice(io, path, out, bytes);
  take_voxels(type, out, count, found);
}

// The sentence at the end of what ITK throws, if it is one that a user can read.
std::string reason_of(const itk::ExceptionObject& error) {
  constexpr size_t kMostShown = 160;
  std::string text = error.GetDescription();
  if (const size_t begin = text.rfind("): "); begin != std::string::npos) text = text.substr(begin + 3);
  text = trimmed(text.substr(0, text.find('\n')));
  while (!text.empty() && (text.back() == '.' || text.back() == '!')) text.pop_back();
  if (text.empty() || text.size() > kMostShown || text.find("0x") != std::string::npos)
    return "it is damaged, cut short or not what its name says";
  return text;
}

}  // namespace

Found read_itk_format(const std::string& path, const ReadOptions& options, VoxelMemory& memory) {
  try {
    const ImageIO::Pointer io = reader_of(path);
    if (is_tiff(File(path).read(0, 16))) check_tiff_pages(path);
    if (!io->CanReadFile(path.c_str())) refuse(quoted(path) + " is not what its name says.");
    io->SetFileName(path);
    io->ReadImageInformation();
    Found found;
    found.array = empty_array();
    take_geometry(*io, path, found.array);
    chosen_volume(path, 1, options.volume);
    read_all(*io, path, memory, found);
    set_strides(found, {1, found.array.size[0], int64_t{found.array.size[0]} * found.array.size[1]});
    return found;
  } catch (const itk::ExceptionObject& error) {
    refuse(quoted(path) + " cannot be read: " + reason_of(error) + ".");
  }
}

}  // namespace zox::input
