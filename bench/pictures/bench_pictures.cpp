// Times whole pictures of this library, VTK and ITK side by side: lines of comma-separated values, the
// contenders taking turns. With one thread processor time counts, with two the clock on the wall.
//   bench_pictures DIRECTORY ROUNDS     writes the pictures compared and the jobs there
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "contender.h"
#include "timing.h"

namespace {

using bench::Contender;
using bench::Image;
using bench::Job;
using bench::Voxels;

constexpr int kEdge = 512;
constexpr double kAzimuth = 30, kElevation = 10;
constexpr int kFrames = 36;

double seconds(clockid_t clock) {
  timespec now;
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

struct Entry {
  std::string name;
  std::unique_ptr<Contender> contender;
  std::vector<double> times;
};

// Every contender once a round, after a picture that is not counted.
void take_turns(std::vector<Entry>& entries, int rounds, int threads,
                const std::function<void(Contender&)>& work, const std::string& row) {
  const clockid_t clock = threads == 1 ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC;
  for (Entry& entry : entries) entry.times.clear();
  for (int round = 0; round < rounds; ++round)
    for (Entry& entry : entries) {
      const double begin = seconds(clock);
      work(*entry.contender);
      entry.times.push_back(seconds(clock) - begin);
    }
  for (const Entry& entry : entries)
    std::printf("%s,%d,%s,%.3f,%.3f\n", row.c_str(), threads, entry.name.c_str(),
                1e3 * bench::median(entry.times),
                1e3 * *std::min_element(entry.times.begin(), entry.times.end()));
  std::fflush(stdout);
}

void save(const Image& image, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file << "P5\n" << image.edge << " " << image.edge << "\n255\n";
  file.write(reinterpret_cast<const char*>(image.pixels.data()),
             static_cast<std::streamsize>(image.pixels.size()));
}

std::string file_name(const Job& job, const std::string& contender) {
  std::string name = job.voxels->name + (job.perspective ? " perspective " : " orthographic ") + contender;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

// The grey that half, and 99 of 100, of the lit pixels differ by less than.
void print_difference(const Job& job, const std::string& name, const Image& ours, const Image& theirs) {
  std::vector<int> differences;
  for (size_t i = 0; i < ours.pixels.size(); ++i)
    if (ours.pixels[i] > 0 || theirs.pixels[i] > 0)
      differences.push_back(std::abs(int{ours.pixels[i]} - int{theirs.pixels[i]}));
  std::sort(differences.begin(), differences.end());
  if (differences.empty()) differences.push_back(255);
  double sum = 0;
  for (const int difference : differences) sum += difference;
  const size_t count = differences.size();
  std::printf("difference,%s,%s,%zu,%s,%d,%.2f\n", job.voxels->name.c_str(),
              job.perspective ? "perspective" : "orthographic", count, name.c_str(),
              differences[count * 99 / 100], sum / static_cast<double>(count));
}

std::vector<Entry> contenders(const Voxels& voxels, int threads) {
  std::vector<Entry> entries;
  entries.push_back({"zox", bench::make_zox(voxels, threads, true), {}});
  entries.push_back({"zox without skipping", bench::make_zox(voxels, threads, false), {}});
  entries.push_back({"vtk", bench::make_vtk(voxels, threads), {}});
  if (threads == 1) entries.push_back({"sampling alone", bench::make_kernel(voxels), {}});
  return entries;
}

void compare(const Job& job, std::vector<Entry>& entries, const std::string& directory) {
  for (Entry& entry : entries) {
    entry.contender->draw(job);
    save(entry.contender->image(), directory + "/" + file_name(job, entry.name) + ".pgm");
    if (&entry != entries.data())
      print_difference(job, entry.name, entries[0].contender->image(), entry.contender->image());
  }
}

// What the others, in processes of their own, must know to draw the same.
void write_job(const Job& job, const std::string& directory) {
  std::ofstream file(directory + "/" + file_name(job, "job"));
  file.precision(17);
  const auto put = [&](const bench::Vec& v) { file << v[0] << " " << v[1] << " " << v[2] << "\n"; };
  put(job.right), put(job.up), put(job.forward), put(job.center);
  file << job.pixel_size << " " << job.step << " " << job.black << " " << job.white << "\n";
}

void write_volume(const Voxels& voxels, const std::string& directory) {
  std::string name = voxels.name;
  std::replace(name.begin(), name.end(), ' ', '-');
  std::ofstream raw(directory + "/" + name + ".raw", std::ios::binary);
  raw.write(reinterpret_cast<const char*>(voxels.bytes.data()),
            static_cast<std::streamsize>(voxels.bytes.size()));
  std::ofstream header(directory + "/" + name + ".mhd");
  header << "ObjectType = Image\nNDims = 3\nDimSize =";
  for (const int size : voxels.size) header << " " << size;
  header << "\nElementType = " << (voxels.type == ZOX_RENDER_UINT8 ? "MET_UCHAR" : "MET_SHORT")
         << "\nElementByteOrderMSB = False\nElementSpacing =";
  for (const double spacing : voxels.spacing) header << " " << spacing;
  header << "\nElementDataFile = " << name << ".raw\n";
}

void time_picture(const Job& job, const std::string& row, std::vector<Entry>& entries, int threads,
                  int rounds) {
  for (Entry& entry : entries) entry.contender->draw(job);
  take_turns(
      entries, rounds, threads, [&](Contender& contender) { contender.draw(job); }, "picture," + row);
}

void time_itk(const Job& job, const std::string& row, const std::string& directory, int rounds) {
  std::vector<Entry> entries;
  entries.push_back({"zox", bench::make_zox(*job.voxels, 1, true), {}});
  entries.push_back({"itk", bench::make_itk(*job.voxels, 1), {}});
  compare(job, entries, directory);
  take_turns(
      entries, rounds, 1, [&](Contender& contender) { contender.draw(job); }, "picture beside ITK," + row);
}

// One turn around the head; volumes and what is known of them are kept.
void time_rotation(const Job& job, const std::string& row, std::vector<Entry>& entries, int rounds) {
  std::vector<double> azimuths;
  for (int frame = 0; frame < kFrames; ++frame) azimuths.push_back(360.0 / kFrames * frame);
  const std::vector<Job> frames = bench::make_jobs(*job.voxels, job.perspective, kEdge, azimuths, kElevation);
  take_turns(
      entries, rounds, 1,
      [&](Contender& contender) {
        for (const Job& frame : frames) contender.draw(frame);
      },
      "36 frames," + row);
}

void run(const Voxels& voxels, const std::string& directory, int rounds) {
  write_volume(voxels, directory);
  for (const int threads : {1, 2}) {
    std::vector<Entry> entries = contenders(voxels, threads);
    for (const bool perspective : {false, true}) {
      const Job job = bench::make_jobs(voxels, perspective, kEdge, {kAzimuth}, kElevation).front();
      const std::string row = voxels.name + (perspective ? ",perspective" : ",orthographic");
      if (threads == 1) {
        compare(job, entries, directory);
        std::printf("samples,%s,1,zox,%lld,\n", row.c_str(), bench::samples_of(job));
      }
      time_picture(job, row, entries, threads, rounds);
      if (threads != 1 || voxels.name == "noise") continue;
      write_job(job, directory);
      const int few = std::max(1, rounds / 3);
      if (!perspective) time_itk(job, row, directory, few);
      time_rotation(job, row, entries, few);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "bench_pictures: a directory and a number of rounds, please\n");
    return 2;
  }
  for (const char* name : {"head 16 bits", "head 8 bits", "brain", "noise"}) {
    const Voxels voxels = bench::read_voxels(name);
    if (voxels.bytes.empty())
      std::fprintf(stderr, "bench_pictures: the scan for '%s' is not installed\n", name);
    else
      run(voxels, argv[1], std::max(1, std::atoi(argv[2])));
  }
}
