// Known by every program, without the library that reads the rest.
#include <array>
#include <fstream>

#include "dicom_frame.h"

namespace zox::input::dicom {

bool looks_like_dicom(const std::string& path) {
  std::array<unsigned char, 132> head{};
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(head.data()), head.size());
  if (file.gcount() < 8) return false;
  if (file.gcount() == 132 && std::string(head.begin() + 128, head.end()) == "DICM") return true;
  const bool identifying_group = head[0] == 8 && head[1] == 0 && head[3] == 0 && head[2] <= 0x18;
  const bool explicit_type = head[4] >= 'A' && head[4] <= 'Z' && head[5] >= 'A' && head[5] <= 'Z';
  const bool short_value = head[5] == 0 && head[6] == 0 && head[7] == 0;
  return identifying_group && (explicit_type || short_value);
}

}  // namespace zox::input::dicom
