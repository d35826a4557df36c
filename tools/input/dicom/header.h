// Access to the elements of a DICOM data set as numbers and texts.
#pragma once

#include <gdcmDataSet.h>
#include <gdcmSequenceOfItems.h>

#include <optional>
#include <string>
#include <vector>

namespace zox::input::dicom {

// The element's text without padding; empty where there is none.
std::string text_of(const gdcm::DataSet& data, gdcm::Tag tag);

// All numbers of a decimal or integer string ("1\2\3"); empty where one of them is none.
std::vector<double> decimals_of(const gdcm::DataSet& data, gdcm::Tag tag);
std::optional<int> integer_text_of(const gdcm::DataSet& data, gdcm::Tag tag);

// An unsigned 16-bit element (US).
std::optional<int> short_of(const gdcm::DataSet& data, gdcm::Tag tag);

// The items of a sequence element; null where there is none.
gdcm::SmartPointer<gdcm::SequenceOfItems> sequence_of(const gdcm::DataSet& data, gdcm::Tag tag);

// The first item of a sequence; empty where there is none.
gdcm::DataSet first_item_of(const gdcm::DataSet& data, gdcm::Tag tag);

}  // namespace zox::input::dicom
