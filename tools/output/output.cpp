#include "output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "signal_hold.h"

namespace zox::output {
namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw Failure("'" + path + "' cannot be written: " + reason + ".");
}

// A file of a name of its own beside the one that is wanted; gone again unless it is moved there.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& path) : path_(path), name_(path + ".XXXXXX") {
    descriptor_ = mkstemp(name_.data());
    if (descriptor_ < 0) refuse(path_, std::strerror(errno));
    // mkstemp lets nobody else read the file; give it what other files get.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor_, 0666 & ~mask);
  }
  ~TemporaryFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!placed_) unlink(name_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int descriptor() const { return descriptor_; }

  void move_to_place() {
    const int closed = close(descriptor_);
    descriptor_ = -1;
    if (closed != 0 || rename(name_.c_str(), path_.c_str()) != 0) refuse(path_, std::strerror(errno));
    placed_ = true;
  }

 private:
  std::string path_;
  std::string name_;
  int descriptor_ = -1;
  bool placed_ = false;
};

void write_all(int descriptor, const std::string& path, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) refuse(path, std::strerror(errno));
    bytes.remove_prefix(static_cast<size_t>(written));
  }
}

bool is_same_file(const struct stat& a, const std::string& path) {
  struct stat b {};
  return stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool ends_with(const std::string& path, std::string_view suffix) {
  return path.size() > suffix.size() &&
         std::equal(suffix.rbegin(), suffix.rend(), path.rbegin(), [](char a, char b) {
           return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
         });
}

struct Suffix {
  const char* text;
  Kind kind;
};
constexpr Suffix kSuffixes[] = {
    {".png", Kind::kPng}, {".apng", Kind::kPng}, {".nrrd", Kind::kNrrd}, {".npy", Kind::kNpy}};

std::string suffixes_of(std::initializer_list<Kind> allowed) {
  std::string names;
  for (const Suffix& suffix : kSuffixes)
    if (std::find(allowed.begin(), allowed.end(), suffix.kind) != allowed.end() &&
        std::string_view(suffix.text) != ".apng")
      names += (names.empty() ? "" : " or ") + std::string(suffix.text);
  return names;
}

}  // namespace

Kind kind_of(const std::string& path, std::initializer_list<Kind> allowed) {
  if (path == kStandardOutput) return *allowed.begin();
  for (const Suffix& suffix : kSuffixes)
    if (ends_with(path, suffix.text) &&
        std::find(allowed.begin(), allowed.end(), suffix.kind) != allowed.end())
      return suffix.kind;
  refuse(path, "the name must end in " + suffixes_of(allowed));
}

void check_place(const std::string& path, const std::vector<std::string>& inputs) {
  if (path == kStandardOutput) {
    if (isatty(STDOUT_FILENO)) throw Failure("Standard output is a terminal, which shows no pictures.");
    return;
  }
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) refuse(path, "there is a folder of that name");
    if (!S_ISREG(status.st_mode)) refuse(path, "there is something else than a file of that name");
    for (const std::string& input : inputs)
      if (is_same_file(status, input)) refuse(path, "it is the file '" + input + "' that is read");
  }
  const SignalHold hold;
  const TemporaryFile probe(path);
}

void write_file(const std::string& path, std::string_view bytes) {
  if (path == kStandardOutput) return write_all(STDOUT_FILENO, "standard output", bytes);
  check_place(path, {});
  const SignalHold hold;
  TemporaryFile file(path);
  write_all(file.descriptor(), path, bytes);
  file.move_to_place();
}

}  // namespace zox::output
