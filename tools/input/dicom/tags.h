// The DICOM elements that are read.
#pragma once

#include <gdcmTag.h>

namespace zox::input::dicom::tags {

inline const gdcm::Tag kModality{0x0008, 0x0060};
inline const gdcm::Tag kSeriesDescription{0x0008, 0x103E};
inline const gdcm::Tag kSpacingBetweenSlices{0x0018, 0x0088};
inline const gdcm::Tag kSeriesUid{0x0020, 0x000E};
inline const gdcm::Tag kSeriesNumber{0x0020, 0x0011};
inline const gdcm::Tag kInstanceNumber{0x0020, 0x0013};
inline const gdcm::Tag kPosition{0x0020, 0x0032};
inline const gdcm::Tag kOrientation{0x0020, 0x0037};
inline const gdcm::Tag kSamplesPerPixel{0x0028, 0x0002};
inline const gdcm::Tag kPhotometric{0x0028, 0x0004};
inline const gdcm::Tag kNumberOfFrames{0x0028, 0x0008};
inline const gdcm::Tag kRows{0x0028, 0x0010};
inline const gdcm::Tag kColumns{0x0028, 0x0011};
inline const gdcm::Tag kPixelSpacing{0x0028, 0x0030};
inline const gdcm::Tag kBitsAllocated{0x0028, 0x0100};
inline const gdcm::Tag kBitsStored{0x0028, 0x0101};
inline const gdcm::Tag kHighBit{0x0028, 0x0102};
inline const gdcm::Tag kPixelRepresentation{0x0028, 0x0103};
inline const gdcm::Tag kWindowCenter{0x0028, 0x1050};
inline const gdcm::Tag kWindowWidth{0x0028, 0x1051};
inline const gdcm::Tag kIntercept{0x0028, 0x1052};
inline const gdcm::Tag kSlope{0x0028, 0x1053};
inline const gdcm::Tag kPixelData{0x7FE0, 0x0010};

// Files of several frames: what holds for all, what for each, and the groups within.
inline const gdcm::Tag kSharedGroups{0x5200, 0x9229};
inline const gdcm::Tag kPerFrameGroups{0x5200, 0x9230};
inline const gdcm::Tag kPlanePosition{0x0020, 0x9113};
inline const gdcm::Tag kPlaneOrientation{0x0020, 0x9116};
inline const gdcm::Tag kPixelMeasures{0x0028, 0x9110};
inline const gdcm::Tag kVoiLut{0x0028, 0x9132};
inline const gdcm::Tag kValueTransformation{0x0028, 0x9145};

}  // namespace zox::input::dicom::tags
