#include <unistd.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/system/system_error.hpp>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>

#include "reading.h"
#include "server.h"
#include "server_limits.h"
#include "view_options.h"
#include "view_request.h"

namespace zox::view {
namespace {

namespace asio = boost::asio;

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;
constexpr char kPhantom[] = "phantom";

int complain(const std::string& sentence, int status) {
  std::fprintf(stderr, "zox-view: %s\n", sentence.c_str());
  return status;
}

Pool make_pool(int threads) {
  zox_render_pool* pool = nullptr;
  if (zox_render_pool_create(threads, &pool) != ZOX_RENDER_OK) throw Refusal(zox_render_last_error());
  return Pool(pool);
}

std::string machine_name() {
  char name[256] = "";
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

std::string address_of(const Guard& guard, const asio::ip::address& address, uint16_t port) {
  std::string host = address.is_v6() ? "[" + address.to_string() + "]" : address.to_string();
  if (address.is_unspecified()) host = guard.machine;
  return "http://" + host + ":" + std::to_string(port) + "/" + guard.token + "/";
}

// What is shown first: the file, or what a folder holds as one volume. A folder that is none lists its
// files on the page.
std::string first_volume(const Options& options, Volumes& volumes, const std::optional<Folder>& folder) {
  const std::string first = options.input.empty() ? kPhantom : folder ? "." : options.input;
  try {
    volumes.get(first);
    return first;
  } catch (const std::runtime_error& failure) {
    if (!folder || folder->list("").empty()) throw;
    complain(std::string(failure.what()) + " The page lists its files.", 0);
    return "";
  }
}

std::shared_ptr<Volume> make_volume(const std::string& name, const Options& options,
                                    const std::optional<Folder>& folder, Reading& reading,
                                    zox_render_pool* pool) {
  if (folder) return std::make_shared<Volume>(name, reading.read(folder->path_of(name)), pool);
  if (name != (options.input.empty() ? kPhantom : options.input))
    throw Refusal("No folder was named when the server was started: " + name + " cannot be opened.");
  return std::make_shared<Volume>(name, options.input.empty() ? input::make_phantom() : reading.read(name),
                                  pool);
}

void serve(const Options& options) {
  Reading reading(options.read);  // before there are threads
  const Pool pool = make_pool(options.threads);
  std::error_code ignored;
  std::optional<Folder> folder;
  if (std::filesystem::is_directory(options.input, ignored)) folder.emplace(options.input);
  Volumes volumes(
      [&](const std::string& name) { return make_volume(name, options, folder, reading, pool.get()); });

  asio::io_context io;
  asio::thread_pool jobs(kRenderJobs);
  asio::thread_pool files(1);
  Shared shared{io, jobs, files, volumes, folder, first_volume(options, volumes, folder), pool.get()};
  const asio::ip::address address = asio::ip::make_address(options.listen);
  Server server(shared, {make_token(), address.is_loopback(), machine_name()}, {address, options.port});
  std::printf("%s\n", address_of(server.guard(), address, server.port()).c_str());
  std::fflush(stdout);
  server.run();
  reading.stop();
  files.join();
  jobs.join();
}

int run(int argc, const char* const* argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    const auto options = parse_options(argc, argv);
    if (options) serve(*options);
    return 0;
  } catch (const Refusal& refusal) {
    return complain(refusal.what(), kBadUsage);
  } catch (const input::Failure& failure) {
    return complain(failure.what(), kFailed);
  } catch (const boost::system::system_error& error) {
    return complain("The server cannot listen: " + error.code().message() + ".", kFailed);
  } catch (const std::system_error& error) {
    return complain(std::string("The system refused: ") + error.what() + ".", kFailed);
  } catch (const std::bad_alloc&) {
    return complain("There is not enough memory for this volume.", kFailed);
  }
}

}  // namespace
}  // namespace zox::view

int main(int argc, char** argv) { return zox::view::run(argc, argv); }
