// The renderer's command line and its files. The first byte says which: an even one leaves a command
// line, its arguments apart by zero bytes; an odd one leaves a file, whose kind the second byte names.
// Either is taken, or refused with one sentence.
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "failure.h"
#include "options.h"
#include "volume.h"

namespace {

namespace fs = std::filesystem;

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
  require(!options.output.empty(), "no output");
  require(options.width >= 1 && options.width <= 8192 && options.height >= 1 && options.height <= 8192,
          "size");
  require(options.step >= 0.05 && options.step <= 64, "step");
  require(options.threads >= 1 && options.threads <= 256, "threads");
  require(options.view.elevation >= -90 && options.view.elevation <= 90, "elevation");
  require(!options.window || options.window->width > 0, "window");
  require(!options.depth_range || options.depth_range->near <= options.depth_range->far, "depth range");
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
  std::string write(size_t kind, const char* bytes, size_t size) const {
    static const char* const kNames[] = {"volume.nii", "volume.nrrd", "volume.mha"};
    const fs::path path = path_ / kNames[kind % std::size(kNames)];
    std::ofstream(path, std::ios::binary).write(bytes, static_cast<std::streamsize>(size));
    return path.string();
  }

 private:
  fs::path path_;
};

void check_volume(const zox_mip::Volume& volume) {
  for (const int size : volume.size) require(size >= 2 && size <= zox_mip::kMaxSize, "size of the volume");
  // The address sanitizer knows how many bytes there are.
  volatile std::byte last = volume.voxels[volume.count() * zox_mip::voxel_bytes(volume.type) - 1];
  static_cast<void>(last);
}

void fuzz_file(size_t kind, const char* bytes, size_t size) {
  static const Folder folder;
  const std::string path = folder.write(kind, bytes, size);
  try {
    check_volume(zox_mip::read_volume(path));
  } catch (const zox_mip::Failure& failure) {
    check_sentence(failure, zox_mip::kExitFailed);
  } catch (const std::bad_alloc&) {
    // A header may ask for more than there is; the renderer says so.
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

// What the format readers keep when they fail is theirs.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libITK\nleak:libitk\nleak:libnifti\nleak:libznz\n";
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cout.rdbuf(nullptr);  // --help and --version print
  // While ITK reads, the renderer silences stderr: what is found then is told all the same.
  __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<intptr_t>(dup(STDERR_FILENO))));
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
