#include "file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#include "text.h"

namespace zox::input {
namespace {

namespace fs = std::filesystem;

// The folder on the way to a file that may not be searched; empty where all may.
std::string closed_folder(const fs::path& path) {
  fs::path folder = path.is_absolute() ? "/" : ".";
  for (const fs::path& part : path.parent_path()) {
    folder /= part;
    if (access(folder.c_str(), X_OK) != 0 && errno == EACCES) return folder.string();
  }
  return "";
}

std::string reason_for(const std::string& path, int error) {
  if (error == ENOENT || error == ENOTDIR) return "does not exist";
  if (error == ENAMETOOLONG) return "has a name longer than the system allows";
  if (error != EACCES && error != EPERM) return std::string("cannot be opened: ") + std::strerror(error);
  const std::string folder = closed_folder(path);
  if (folder.empty()) return "may not be read: permission is denied";
  return "cannot be reached: permission to search the folder " + quoted(folder) + " is denied";
}

[[noreturn]] void refuse(const std::string& path, const std::string& header, const std::string& reason) {
  if (!header.empty())
    throw Failure(quoted(header) + " names the voxel file " + quoted(path) + ", which " + reason + ".");
  if (reason == "does not exist") throw Failure("There is no file " + quoted(path) + ".");
  throw Failure(quoted(path) + " " + reason + ".");
}

}  // namespace

void Unmap::operator()(void* memory) const { munmap(memory, bytes); }

Mapping map_descriptor(int descriptor, size_t bytes) {
  void* memory = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, descriptor, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return Mapping(memory, Unmap{bytes});
}

File::File(const std::string& path, const std::string& header) : path_(path) {
  // Not even the opening may wait: a pipe without a writer would let it.
  // A byte 0 would cut the name, and another file be read.
  if (path.find('\0') != std::string::npos) refuse(path, header, reason_for(path, ENOENT));
  descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor_ < 0) refuse(path, header, reason_for(path, errno));
  struct stat status {};
  const bool known = fstat(descriptor_, &status) == 0;
  if (known && S_ISREG(status.st_mode)) {
    size_ = static_cast<uint64_t>(status.st_size);
    return;
  }
  close(descriptor_);
  refuse(path, header, known && S_ISDIR(status.st_mode) ? "is a folder, not a file" : "is not a file");
}

File::~File() { close(descriptor_); }

std::string File::read(uint64_t offset, size_t bytes) const {
  if (offset >= size_) return "";
  std::string text(static_cast<size_t>(std::min<uint64_t>(bytes, size_ - offset)), '\0');
  if (!read_into(offset, text.data(), text.size())) return "";
  return text;
}

bool File::read_into(uint64_t offset, void* to, uint64_t bytes) const {
  char* at = static_cast<char*>(to);
  if (offset > size_ || bytes > size_ - offset) return false;
  while (bytes > 0) {
    const ssize_t got = pread(descriptor_, at, bytes, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw Failure(quoted(path_) + " cannot be read: " + std::strerror(errno) + ".");
    if (got == 0) return false;
    at += got;
    offset += static_cast<uint64_t>(got);
    bytes -= static_cast<uint64_t>(got);
  }
  return true;
}

Mapping File::map() const {
  if (size_ == 0) return Mapping(nullptr, Unmap{0});
  return map_descriptor(descriptor_, static_cast<size_t>(size_));
}

}  // namespace zox::input
