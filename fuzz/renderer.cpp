// The renderer's command line and its files. The first byte says which: an even one leaves a command
// line, its arguments apart by zero bytes; an odd one leaves a file, whose kind the second byte names.
// Either is taken, or refused with one sentence.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "exit_failure.h"
#include "file.h"
#include "meta_image.h"
#include "nifti.h"
#include "nrrd.h"
#include "options.h"

namespace {

namespace fs = std::filesystem;
namespace input = zox::input;

constexpr size_t kMostMemory = size_t{256} << 20;

void require(bool good, const std::string& what) {
  if (good) return;
  std::fprintf(stderr, "The renderer broke its word: %s\n", what.c_str());
  std::abort();
}

void check_sentence(const zox_mip::Failure& failure, zox_mip::ExitStatus status) {
  const std::string sentence = failure.what();
  require(failure.status == status, "the exit status of: " + sentence);
  require(!sentence.empty() && sentence.back() == '.', "no sentence: " + sentence);
}

void check_options(const zox_mip::Options& options) {
  const zox_render_view& view = options.view;
  require(!options.output.empty() || options.list_series, "no output");
  require(!options.views.empty(), "no view");
  require(view.width >= 1 && view.width <= 8192 && view.height >= 1 && view.height <= 8192, "size");
  require(view.step >= 0.05 && view.step <= 64, "step");
  require(options.threads >= 1 && options.threads <= 256, "threads");
  for (const zox_mip::NamedView& named : options.views)
    require(named.elevation >= -90 && named.elevation <= 90, "elevation");
  require(view.window_width >= 0, "window");
  require(view.slab_near <= view.slab_far, "depth range");
  require(view.zoom > 0, "zoom");
  require(options.spin.frames >= 1 && options.spin.frames <= 3600, "frames");
}

void fuzz_options(const std::string& text) {
  std::vector<std::string> words = {"zox-mip"};
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\0', begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  arguments.push_back(nullptr);
  try {
    if (const auto options = zox_mip::parse_options(static_cast<int>(words.size()), arguments.data()))
      check_options(*options);
  } catch (const zox_mip::Failure& failure) {
    check_sentence(failure, zox_mip::kExitBadUsage);
  }
}

struct Kind {
  const char* name;
  input::Found (*read)(const std::string&, const input::ReadOptions&, input::VoxelMemory&);
  std::vector<std::string> (*files)(const std::string&);
};
constexpr Kind kKinds[] = {{"volume.nii", input::read_nifti, input::nifti_files},
                           {"volume.nrrd", input::read_nrrd, input::nrrd_files},
                           {"volume.mha", input::read_meta_image, input::meta_image_files},
                           {"volume.nii.gz", input::read_nifti, input::nifti_files}};

// One file name a kind, in a folder of this process's own.
class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "zox-fuzz-XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "no temporary folder");
    path_ = name;
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  std::string write(const Kind& kind, const char* bytes, size_t size) const {
    const fs::path path = path_ / kind.name;
    std::ofstream(path, std::ios::binary).write(bytes, static_cast<std::streamsize>(size));
    return path.string();
  }

 private:
  fs::path path_;
};

// The volume lies within what it is said to lie in.
void check_found(const input::Found& found, const input::VoxelMemory& memory) {
  const zox_render_array& array = found.array;
  const auto end = static_cast<int64_t>(found.file.empty() ? input::bytes_of(memory.block()).size()
                                                           : fs::file_size(found.file));
  int64_t last = static_cast<int64_t>(found.offset + input::type_bytes(array.type));
  for (size_t axis = 0; axis < 3; ++axis) {
    require(array.size[axis] >= 2 && array.strides[axis] > 0, "size of the volume");
    last += array.strides[axis] * (array.size[axis] - 1);
  }
  require(last <= end, "voxels beyond the end");
}

void check_sentence(const input::Failure& failure) {
  const std::string sentence = failure.what();
  require(!sentence.empty() && sentence.back() == '.', "no sentence: " + sentence);
}

void fuzz_file(size_t number, const char* bytes, size_t size) {
  static const Folder folder;
  const Kind& kind = kKinds[number % std::size(kKinds)];
  const std::string path = folder.write(kind, bytes, size);
  input::VoxelMemory memory(kMostMemory);
  input::ReadOptions options;
  options.volume = size % 3 == 0 ? 1 : -1;
  try {
    check_found(kind.read(path, options, memory), memory);
  } catch (const input::Failure& failure) {
    check_sentence(failure);
  } catch (const std::bad_alloc&) {
    // A header may ask for more than there is; the renderer says so.
  }
  try {
    require(!kind.files(path).empty(), "no file of its own");
  } catch (const input::Failure& failure) {
    check_sentence(failure);
  }
}

}  // namespace

// The sanitizer ends the process when memory runs out, where the renderer has an answer.
void* operator new(size_t size) {
  void* block = size <= kMostMemory ? std::malloc(size) : nullptr;
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }

// Other forms of new stay the sanitizer's.
extern "C" const char* __asan_default_options() {
  return "alloc_dealloc_mismatch=0:allocator_may_return_null=1";
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cout.rdbuf(nullptr);  // --help and --version print
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  if (size < 2) return 0;
  if (text[0] % 2 == 0) {
    fuzz_options(std::string(text + 1, size - 1));
  } else {
    fuzz_file(data[1], text + 2, size - 2);
  }
  return 0;
}
