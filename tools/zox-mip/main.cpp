#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <system_error>

#include "failure.h"
#include "options.h"
#include "png_file.h"
#include "render.h"
#include "volume.h"
#include "window.h"

namespace zox_mip {
namespace {

void report_volume(const Volume& volume, const std::string& name) {
  std::printf("%s: %d x %d x %d voxels of %.4g x %.4g x %.4g mm, %s", name.c_str(), volume.size[0],
              volume.size[1], volume.size[2], length(volume.axes[0]), length(volume.axes[1]),
              length(volume.axes[2]), volume.type == VoxelType::kBytes ? "8-bit" : "16-bit");
  if (volume.scale != 1 || volume.offset != 0)
    std::printf(", scaled from floating point: value = %.9g + %.9g * stored", volume.offset, volume.scale);
  std::printf("\n");
}

void report_picture(const Options& options, const Volume& volume, const StoredWindow& window, int64_t samples,
                    double seconds) {
  std::printf("%s: %d x %d, window %.6g,%.6g, %.1f million samples in %.2f s on %d thread%s\n",
              options.output.c_str(), options.width, options.height,
              volume.offset + volume.scale * window.center, volume.scale * window.width,
              static_cast<double>(samples) * 1e-6, seconds, options.threads, options.threads == 1 ? "" : "s");
}

// Some format readers end the process on a damaged file, while stderr is silenced for them: say what
// it is about all the same. Nothing has been written by then.
constexpr int kViolentEnds[] = {SIGABRT, SIGSEGV, SIGBUS, SIGFPE};
int told = -1;
void answer_violent_end(int) {
  static const char sentence[] = "zox-mip: The file cannot be read: it is damaged.\n";
  const ssize_t ignored = write(told, sentence, sizeof sentence - 1);
  static_cast<void>(ignored);
  _exit(kExitFailed);
}

Volume read_input(const std::string& path) {
  told = dup(STDERR_FILENO);
  for (const int end : kViolentEnds) std::signal(end, answer_violent_end);
  Volume volume = read_volume(path);
  for (const int end : kViolentEnds) std::signal(end, SIG_DFL);
  close(told);
  return volume;
}

void make_picture(const Options& options) {
  const bool phantom = options.input.empty();
  Volume volume = phantom ? make_phantom() : read_input(options.input);
  const StoredWindow window = choose_window(options.window, volume);
  const auto start = std::chrono::steady_clock::now();
  const Rendering rendering = render(volume, options, !options.quiet && isatty(STDERR_FILENO));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  write_png(options.output, options.width, options.height, apply_window(window, rendering.maxima));
  if (options.quiet) return;
  report_volume(volume, phantom ? "phantom" : options.input);
  report_picture(options, volume, window, rendering.samples, time.count());
}

int complain(const std::string& sentence, ExitStatus status) {
  std::fprintf(stderr, "zox-mip: %s\n", sentence.c_str());
  return status;
}

int run(int argc, const char* const* argv) {
  try {
    if (const auto options = parse_options(argc, argv)) make_picture(*options);
    return kExitDone;
  } catch (const Failure& failure) {
    return complain(failure.what(), failure.status);
  } catch (const std::bad_alloc&) {
    return complain("There is not enough memory for this volume and picture.", kExitFailed);
  } catch (const std::system_error& error) {
    return complain(std::string("The system refused: ") + error.what() + ".", kExitFailed);
  }
}

}  // namespace
}  // namespace zox_mip

int main(int argc, char** argv) { return zox_mip::run(argc, argv); }
