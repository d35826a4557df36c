#include "view_options.h"

#include <zox_render.h>

#include <CLI/CLI.hpp>
#include <boost/asio/ip/address.hpp>
#include <iostream>
#include <vector>

#include "view_request.h"

namespace zox::view {
namespace {

void declare(CLI::App& app, Options& options, bool& phantom, std::vector<double>& spacing,
             double& gibibytes) {
  app.add_option("input", options.input, "File to show, or folder whose files may be opened from the page");
  app.add_flag("--phantom", phantom, "Show the built-in phantom instead of a file");
  app.add_option("--port", options.port, "Port to listen on; 0: any free one")->capture_default_str();
  app.add_option("--listen", options.listen, "Address to listen on")->capture_default_str();
  app.add_option("-j,--threads", options.threads, "Threads that render (default: all cores)")
      ->check(CLI::Range(1, 1024));
  app.add_option("--volume", options.read.volume, "Which volume of a file that holds several, from 0")
      ->check(CLI::Range(0, 1 << 20));
  app.add_option("--series", options.read.series, "Which series of a folder that holds several");
  app.add_option("--dataset", options.read.dataset,
                 "Which dataset of an HDF5 file, by its path in there (default: the only volume)");
  app.add_option("--spacing", spacing, "X,Y,Z in millimetres from voxel to voxel, instead of what files say")
      ->delimiter(',')
      ->expected(3);
  app.add_option("--memory", gibibytes, "GiB that reading a file may take (default: what the system has)")
      ->check(CLI::Range(0.001, 1048576.0));
  app.add_option("--read-seconds", options.read.seconds, "After how long reading a file is given up")
      ->capture_default_str()
      ->check(CLI::Range(0.1, 86400.0));
}

void take_spacing(const std::vector<double>& lengths, Options& options) {
  if (lengths.empty()) return;
  for (const double length : lengths)
    if (!(length >= 1e-9 && length <= 1e6))
      throw Refusal("--spacing takes X,Y,Z in millimetres, 1e-9 to 1e6 each.");
  options.read.spacing = {lengths[0], lengths[1], lengths[2]};
}

void judge(const Options& options, bool phantom) {
  if (phantom == !options.input.empty()) throw Refusal("Name one file or folder to show, or give --phantom.");
  boost::system::error_code error;
  boost::asio::ip::make_address(options.listen, error);
  if (error)
    throw Refusal("--listen takes an address in numbers, such as 127.0.0.1, not '" + options.listen + "'.");
}

}  // namespace

std::optional<Options> parse_options(int argc, const char* const* argv) {
  CLI::App app("Shows volumes in the browser.", "zox-view");
  app.set_version_flag("--version", std::string("zox-view ") + zox_render_version());
  Options options;
  bool phantom = false;
  std::vector<double> spacing;
  double gibibytes = 0;
  declare(app, options, phantom, spacing, gibibytes);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    const std::string sentence = error.what();
    throw Refusal(sentence + (sentence.ends_with(".") ? "" : "."));
  }
  judge(options, phantom);
  take_spacing(spacing, options);
  options.read.memory_limit = static_cast<uint64_t>(gibibytes * (1 << 30));
  return options;
}

}  // namespace zox::view
