#include "arrays.h"

#include <bit>

namespace zox::output {
namespace {

static_assert(std::endian::native == std::endian::little, "the headers say so");

void put_numbers(std::string& bytes, const Numbers& numbers) {
  const size_t count = static_cast<size_t>(numbers.width) * static_cast<size_t>(numbers.height);
  if (numbers.shorts)
    bytes.append(reinterpret_cast<const char*>(numbers.shorts), count * sizeof(int16_t));
  else
    bytes.append(reinterpret_cast<const char*>(numbers.floats), count * sizeof(float));
}

}  // namespace

std::string encode_npy(const Numbers& numbers) {
  std::string header = std::string("{'descr': '") + (numbers.shorts ? "<i2" : "<f4") +
                       "', 'fortran_order': False, 'shape': (" + std::to_string(numbers.height) + ", " +
                       std::to_string(numbers.width) + "), }";
  // The numbers begin at a multiple of 64 bytes, behind a line's end; 10 bytes stand before the header.
  header.append(63 - (10 + header.size()) % 64, ' ');
  header += '\n';
  std::string bytes("\x93NUMPY\x01\x00", 8);
  bytes += static_cast<char>(header.size() & 255);
  bytes += static_cast<char>(header.size() >> 8);
  bytes += header;
  put_numbers(bytes, numbers);
  return bytes;
}

std::string encode_nrrd(const Numbers& numbers,
                        const std::vector<std::pair<std::string, std::string>>& meaning) {
  std::string bytes = std::string("NRRD0004\ntype: ") + (numbers.shorts ? "short" : "float") +
                      "\ndimension: 2\nsizes: " + std::to_string(numbers.width) + " " +
                      std::to_string(numbers.height) +
                      "\nkinds: domain domain\nendian: little\nencoding: raw\n";
  for (const auto& [key, value] : meaning) bytes += key + ":=" + value + "\n";
  bytes += "\n";
  put_numbers(bytes, numbers);
  return bytes;
}

}  // namespace zox::output
