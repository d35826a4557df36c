// The one folder whose files may be opened. Names come from the page; none leads out of it, neither
// through ".." nor through a link.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zox::view {

struct Entry {
  std::string name;
  bool is_folder = false;
  uint64_t bytes = 0;
};

class Folder {
 public:
  // Throws Refusal unless `path` is a folder that can be read.
  explicit Folder(const std::string& path);

  // The path of a file or folder, `name` being relative to this folder; "" is the folder itself. Throws
  // Refusal when there is none or it lies outside.
  std::string path_of(const std::string& name) const;

  // Folders first, by name; without what begins with a dot. Throws Refusal.
  std::vector<Entry> list(const std::string& name) const;

 private:
  std::string root_;
};

}  // namespace zox::view
