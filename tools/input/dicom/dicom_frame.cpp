#include "dicom_frame.h"

#include <gdcmReader.h>

#include <cmath>
#include <filesystem>

#include "extent.h"
#include "header.h"
#include "no_abort.h"
#include "tags.h"

namespace zox::input::dicom {
namespace {

constexpr int kMostFrames = 65536;

// Why a file holds no slice.
struct Flaw {
  std::string why;
};
[[noreturn]] void flawed(const std::string& why) { throw Flaw{why}; }

Vector three(const std::vector<double>& values, size_t first) {
  return {values[first], values[first + 1], values[first + 2]};
}

bool finite(const std::vector<double>& values) {
  for (const double value : values)
    if (!std::isfinite(value) || std::abs(value) > 1e6) return false;
  return true;
}

void read_position(const gdcm::DataSet& data, Frame& frame, bool& found) {
  const std::vector<double> values = decimals_of(data, tags::kPosition);
  if (values.empty()) return;
  if (values.size() != 3 || !finite(values)) flawed("gives a position that is not three numbers");
  frame.position = three(values, 0);
  found = true;
}

void read_orientation(const gdcm::DataSet& data, Frame& frame, bool& found) {
  const std::vector<double> values = decimals_of(data, tags::kOrientation);
  if (values.empty()) return;
  if (values.size() != 6 || !finite(values)) flawed("gives an orientation that is not six numbers");
  frame.along_row = three(values, 0);
  frame.along_column = three(values, 3);
  double lengths[2] = {0, 0}, product = 0;
  for (size_t i = 0; i < 3; ++i) {
    lengths[0] += frame.along_row[i] * frame.along_row[i];
    lengths[1] += frame.along_column[i] * frame.along_column[i];
    product += frame.along_row[i] * frame.along_column[i];
  }
  if (std::abs(lengths[0] - 1) > 0.01 || std::abs(lengths[1] - 1) > 0.01 || std::abs(product) > 0.01)
    flawed("gives an orientation of rows and columns that are not at right angles or not of length 1");
  for (size_t i = 0; i < 3; ++i) {
    frame.along_row[i] /= std::sqrt(lengths[0]);
    frame.along_column[i] /= std::sqrt(lengths[1]);
  }
  found = true;
}

// The file gives the distance of rows first.
void read_spacing(const gdcm::DataSet& data, Frame& frame, bool& found) {
  const std::vector<double> values = decimals_of(data, tags::kPixelSpacing);
  if (values.empty()) return;
  if (values.size() != 2 || !finite(values) || values[0] < 1e-4 || values[1] < 1e-4)
    flawed("gives a pixel spacing that is not two lengths above 0");
  frame.spacing = {values[1], values[0]};
  found = true;
}

void read_rescale(const gdcm::DataSet& data, Frame& frame) {
  const std::vector<double> slope = decimals_of(data, tags::kSlope);
  const std::vector<double> intercept = decimals_of(data, tags::kIntercept);
  if (slope.size() == 1) frame.slope = slope[0];
  if (intercept.size() == 1) frame.intercept = intercept[0];
  if (!std::isfinite(frame.slope) || frame.slope == 0 || !std::isfinite(frame.intercept))
    flawed("gives a rescale slope or intercept that is no usable number");
}

void read_window(const gdcm::DataSet& data, Frame& frame) {
  const std::vector<double> center = decimals_of(data, tags::kWindowCenter);
  const std::vector<double> width = decimals_of(data, tags::kWindowWidth);
  if (!center.empty() && !width.empty() && std::isfinite(center[0]) && width[0] >= 1)
    frame.window = Window{center[0], width[0]};
}

struct Found {
  bool position = false, orientation = false, spacing = false;
};

// What a data set, or the groups of a frame, say of where its pixels lie and what they mean.
void read_plane(const gdcm::DataSet& data, Frame& frame, Found& found) {
  read_position(data, frame, found.position);
  read_orientation(data, frame, found.orientation);
  read_spacing(data, frame, found.spacing);
  read_rescale(data, frame);
  read_window(data, frame);
}

void read_groups(const gdcm::DataSet& groups, Frame& frame, Found& found) {
  for (const gdcm::Tag& tag : {tags::kPlanePosition, tags::kPlaneOrientation, tags::kPixelMeasures,
                               tags::kVoiLut, tags::kValueTransformation})
    read_plane(first_item_of(groups, tag), frame, found);
}

void require(const Found& found) {
  if (!found.position) flawed("does not say where its slice lies");
  if (!found.orientation) flawed("does not say how its slice is oriented");
  if (!found.spacing) flawed("does not say how far apart its pixels are");
}

void read_pixel_layout(const gdcm::DataSet& data, Frame& frame) {
  frame.columns = short_of(data, tags::kColumns).value_or(0);
  frame.rows = short_of(data, tags::kRows).value_or(0);
  if (frame.columns < 1 || frame.rows < 1) flawed("holds no picture");
  if (short_of(data, tags::kSamplesPerPixel).value_or(1) != 1) flawed("is in colour");
  const std::string meaning = text_of(data, tags::kPhotometric);
  if (meaning == "PALETTE COLOR") flawed("is in the colours of a palette");
  if (meaning == "MONOCHROME1")
    flawed("is a negative (MONOCHROME1), which has no brightest values to look for");
  if (meaning != "MONOCHROME2") flawed("does not say that its pixels are grey");
  PixelLayout& pixel = frame.pixel;
  pixel.bits_allocated = short_of(data, tags::kBitsAllocated).value_or(0);
  pixel.bits_stored = short_of(data, tags::kBitsStored).value_or(pixel.bits_allocated);
  pixel.high_bit = short_of(data, tags::kHighBit).value_or(pixel.bits_stored - 1);
  pixel.is_signed = short_of(data, tags::kPixelRepresentation).value_or(0) == 1;
  if (pixel.bits_allocated != 8 && pixel.bits_allocated != 16)
    flawed("holds pixels of " + std::to_string(pixel.bits_allocated) + " bits, where 8 and 16 can be read");
  if (pixel.bits_stored < 1 || pixel.bits_stored > pixel.bits_allocated ||
      pixel.high_bit >= pixel.bits_allocated || pixel.high_bit < pixel.bits_stored - 1)
    flawed("contradicts itself on the bits of a pixel");
}

Frame read_common(const std::string& path, const gdcm::DataSet& data) {
  Frame frame;
  frame.path = path;
  frame.series_uid = text_of(data, tags::kSeriesUid);
  frame.modality = printable(text_of(data, tags::kModality));
  frame.description = printable(text_of(data, tags::kSeriesDescription));
  frame.series_number = integer_text_of(data, tags::kSeriesNumber);
  frame.instance_number = integer_text_of(data, tags::kInstanceNumber);
  read_pixel_layout(data, frame);
  return frame;
}

void require_pixels(const std::string& path, const gdcm::TransferSyntax& syntax) {
  if (syntax == gdcm::TransferSyntax::DeflatedExplicitVRLittleEndian)
    flawed("is deflated as a whole, which is not supported");
  const bool big_endian = syntax == gdcm::TransferSyntax::ExplicitVRBigEndian;
  if (!holds_all_pixels(path, {syntax.IsExplicit(), big_endian})) flawed("has pixels that are cut short");
}

std::vector<Frame> frames_of(const std::string& path, const gdcm::File& file) {
  const gdcm::DataSet& data = file.GetDataSet();
  Frame frame = read_common(path, data);
  require_pixels(path, file.GetHeader().GetDataSetTransferSyntax());
  Found found;
  read_plane(data, frame, found);
  const int count = integer_text_of(data, tags::kNumberOfFrames).value_or(1);
  const gdcm::SmartPointer<gdcm::SequenceOfItems> each = sequence_of(data, tags::kPerFrameGroups);
  if (count == 1 && !each) {
    require(found);
    return {frame};
  }
  if (count < 1 || count > kMostFrames) flawed("says that it holds " + std::to_string(count) + " frames");
  if (!each) flawed("holds several frames and does not say where each lies");
  if (each->GetNumberOfItems() != static_cast<size_t>(count))
    flawed("says where " + std::to_string(each->GetNumberOfItems()) + " of its " + std::to_string(count) +
           " frames lie");
  read_groups(first_item_of(data, tags::kSharedGroups), frame, found);
  std::vector<Frame> frames;
  for (int i = 0; i < count; ++i) {
    Frame one = frame;
    Found own = found;
    one.index = i;
    read_groups(each->GetItem(static_cast<size_t>(i) + 1).GetNestedDataSet(), one, own);
    require(own);
    frames.push_back(one);
  }
  return frames;
}

}  // namespace

FileContent read_frames(const std::string& path) {
  FileContent content;
  content.is_dicom = looks_like_dicom(path);
  if (!content.is_dicom) return content;
  gdcm::Reader reader;
  reader.SetFileName(path.c_str());
  bool is_read = false;
  const bool survived = without_abort([&] { is_read = reader.ReadUpToTag(tags::kPixelData); });
  if (!survived || !is_read) {
    // The index of a disk has this name and is no slice.
    content.damaged = std::filesystem::path(path).filename() != "DICOMDIR";
    content.flaw = "is damaged or cut short";
    return content;
  }
  const gdcm::DataSet& data = reader.GetFile().GetDataSet();
  content.series_uid = text_of(data, tags::kSeriesUid);
  try {
    content.frames = frames_of(path, reader.GetFile());
  } catch (const Flaw& flaw) {
    content.flaw = flaw.why;
  }
  return content;
}

}  // namespace zox::input::dicom
