#include "header.h"

#include <gdcmByteValue.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace zox::input::dicom {
namespace {

// Longest text of which anything is wanted; no element that counts here is longer.
constexpr size_t kMostText = 4096;

std::string trimmed(const std::string& text) {
  const char* const padding = " \0\t\r\n";
  const std::string set(padding, 5);
  const size_t begin = text.find_first_not_of(set);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(set) - begin + 1);
}

std::optional<double> number(std::string text) {
  text = trimmed(text);
  if (!text.empty() && text[0] == '+') text.erase(0, 1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return value;
}

}  // namespace

std::string text_of(const gdcm::DataSet& data, gdcm::Tag tag) {
  if (!data.FindDataElement(tag)) return {};
  const gdcm::ByteValue* value = data.GetDataElement(tag).GetByteValue();
  if (!value || value->GetLength() > kMostText) return {};
  return trimmed(std::string(value->GetPointer(), value->GetLength()));
}

std::vector<double> decimals_of(const gdcm::DataSet& data, gdcm::Tag tag) {
  const std::string text = text_of(data, tag);
  std::vector<double> values;
  for (size_t begin = 0; !text.empty() && begin <= text.size();) {
    const size_t end = std::min(text.find('\\', begin), text.size());
    const std::optional<double> value = number(text.substr(begin, end - begin));
    if (!value) return {};
    values.push_back(*value);
    begin = end + 1;
  }
  return values;
}

std::optional<int> integer_text_of(const gdcm::DataSet& data, gdcm::Tag tag) {
  const std::vector<double> values = decimals_of(data, tag);
  if (values.size() != 1 || !(std::abs(values[0]) <= INT32_MAX)) return {};
  return static_cast<int>(values[0]);
}

std::optional<int> short_of(const gdcm::DataSet& data, gdcm::Tag tag) {
  if (!data.FindDataElement(tag)) return {};
  const gdcm::ByteValue* value = data.GetDataElement(tag).GetByteValue();
  uint16_t number = 0;
  if (!value || value->GetLength() != sizeof number) return {};
  std::memcpy(&number, value->GetPointer(), sizeof number);
  return number;
}

gdcm::SmartPointer<gdcm::SequenceOfItems> sequence_of(const gdcm::DataSet& data, gdcm::Tag tag) {
  if (!data.FindDataElement(tag)) return nullptr;
  return data.GetDataElement(tag).GetValueAsSQ();
}

gdcm::DataSet first_item_of(const gdcm::DataSet& data, gdcm::Tag tag) {
  const gdcm::SmartPointer<gdcm::SequenceOfItems> items = sequence_of(data, tag);
  if (!items || items->GetNumberOfItems() == 0) return {};
  return items->GetItem(1).GetNestedDataSet();
}

}  // namespace zox::input::dicom
