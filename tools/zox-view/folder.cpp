#include "folder.h"

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "server_limits.h"
#include "view_request.h"

namespace zox::view {
namespace fs = std::filesystem;

Folder::Folder(const std::string& path) {
  std::error_code error;
  root_ = fs::canonical(path, error).string();
  if (error || !fs::is_directory(root_, error)) throw Refusal(path + " is not a folder that can be read.");
}

std::string Folder::path_of(const std::string& name) const {
  if (name.find('\0') != std::string::npos) throw Refusal("No name of a file holds a zero byte.");
  std::error_code error;
  const fs::path root = root_;
  const fs::path path = fs::canonical(root / name, error);
  if (error || std::mismatch(root.begin(), root.end(), path.begin(), path.end()).first != root.end())
    throw Refusal("There is no " + name + " in the folder.");
  return path.string();
}

std::vector<Entry> Folder::list(const std::string& name) const {
  std::error_code error;
  std::vector<Entry> entries;
  for (fs::directory_iterator at(path_of(name), error), end; !error && at != end; at.increment(error)) {
    Entry entry{at->path().filename().string()};
    std::error_code ignored;
    if (entry.name.starts_with('.')) continue;
    entry.is_folder = at->is_directory(ignored);
    if (!entry.is_folder && !at->is_regular_file(ignored)) continue;
    if (!entry.is_folder) entry.bytes = at->file_size(ignored);
    entries.push_back(entry);
    if (entries.size() == kMaxEntries) break;
  }
  if (error) throw Refusal("The folder " + name + " cannot be read: " + error.message() + ".");
  std::sort(entries.begin(), entries.end(), [](const Entry& one, const Entry& other) {
    return std::tuple(!one.is_folder, one.name) < std::tuple(!other.is_folder, other.name);
  });
  return entries;
}

}  // namespace zox::view
