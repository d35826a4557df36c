// Files that appear whole or not at all, and never in the place of what is read.
#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zox::output {

// Why something cannot be written: one sentence that names the file.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The name that stands for standard output.
inline constexpr char kStandardOutput[] = "-";

enum class Kind { kPng, kNrrd, kNpy };

// What the suffix of a name asks for: .png and .apng, .nrrd, .npy, capitals or not. Throws Failure for
// others and for what is not `allowed`; standard output is the first of `allowed`.
Kind kind_of(const std::string& path, std::initializer_list<Kind> allowed);

// Before any work: that a file of this name could be written, and that it is none of `inputs`, by
// whatever name. Writes nothing. Throws Failure.
void check_place(const std::string& path, const std::vector<std::string>& inputs);

// Writes the file under a temporary name in the same folder and moves it to its place, so that an older
// one stays whole until then. Ctrl-C and the like wait until nothing temporary is left. Throws Failure.
void write_file(const std::string& path, std::string_view bytes);

}  // namespace zox::output
