// A file to read: opened without waiting for anybody, and refused with the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "scan.h"

namespace zox::input {

class File {
 public:
  // `header` is the file that names this one, or empty when the user did. Throws Failure when it is no
  // regular file that can be read.
  explicit File(const std::string& path, const std::string& header = "");
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  const std::string& path() const { return path_; }
  uint64_t size() const { return size_; }

  // As many bytes from `offset` as there are, up to `bytes`.
  std::string read(uint64_t offset, size_t bytes) const;
  // `bytes` bytes from `offset`; false when they are not there.
  bool read_into(uint64_t offset, void* to, uint64_t bytes) const;
  // The whole file, as long as the mapping lives.
  Mapping map() const;

 private:
  std::string path_;
  int descriptor_ = -1;
  uint64_t size_ = 0;
};

// The mapping of `bytes` bytes at the beginning of an open file. Throws std::bad_alloc.
Mapping map_descriptor(int descriptor, size_t bytes);

inline std::span<const std::byte> bytes_of(const Mapping& mapping) {
  return {static_cast<const std::byte*>(mapping.get()), mapping.get_deleter().bytes};
}

}  // namespace zox::input
