// What adding up a tree costs, as ratios to a bare walk (openat, getdents64, statx, close; one thread) of the
// same tree in the same run.
//
//   StorageWalkBench generate FOLDER ENTRIES   makes a tree, always the same for the same number
//   StorageWalkBench walk FOLDER [ROUNDS]      times floor, one thread and two threads in turn
//   StorageWalkBench memory FOLDER             how far the peak rises over the idle process

#include "Bench/Measure.h"
#include "Platform/Linux/LinuxFileTree.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace korvell;

namespace {

/// Folders of about nine entries, as in real homes; one file in three holds something.
void generate(const std::string& top, int entries) {
  std::mt19937 random(42);
  std::vector<std::string> folders = {top};
  std::filesystem::create_directories(top);
  const std::string content(5000, 'x');
  for (int i = 0; i < entries; ++i) {
    const auto& parent = folders[random() % folders.size()];
    const auto path = parent + "/entry-" + std::to_string(i);
    if (i % 9 == 0 && std::ranges::count(path, '/') < 24) {
      mkdir(path.c_str(), 0700);
      folders.push_back(path);
      continue;
    }
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    if (i % 3 == 0 && write(file.get(), content.data(), random() % content.size()) < 0) return;
  }
}

/// struct linux_dirent64
struct Entry {
  std::uint64_t inode;
  std::int64_t offset;
  unsigned short length;
  unsigned char type;
  char name[1];
};

std::int64_t bareWalk(int parent, const char* name) {
  const Descriptor folder(openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder) return 0;
  alignas(Entry) char buffer[32 * 1024];
  std::int64_t sum = 0;
  long length = 0;
  while ((length = syscall(SYS_getdents64, folder.get(), buffer, sizeof buffer)) > 0) {
    for (long at = 0; at < length;) {
      const auto* entry = reinterpret_cast<const Entry*>(buffer + at);
      at += entry->length;
      if (std::strcmp(entry->name, ".") == 0 || std::strcmp(entry->name, "..") == 0) continue;
      struct statx status {};
      if (statx(folder.get(), entry->name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0) continue;
      if (S_ISREG(status.stx_mode) && status.stx_nlink < 2) sum += std::int64_t(status.stx_blocks) * 512;
      if (S_ISDIR(status.stx_mode)) sum += bareWalk(folder.get(), entry->name);
    }
  }
  return sum;
}

struct Series {
  const char* name;
  std::function<std::int64_t()> run;
  std::vector<double> cpu = {}, wall = {};
  std::int64_t sum = 0;

  void round() {
    const auto cpuStart = cpuTime().count();
    const auto start = std::chrono::steady_clock::now();
    sum = run();
    wall.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    cpu.push_back(cpuTime().count() - cpuStart);
  }
};

/// From the wish to stop to the return of the call, at several points of the walk.
double slowestCancel(LinuxFileTree& tree, const std::string& folder) {
  double slowest = 0;
  for (int milliseconds = 5; milliseconds <= 100; milliseconds += 19) {
    const Cancellation cancellation;
    std::chrono::steady_clock::time_point asked;
    std::thread user([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
      asked = std::chrono::steady_clock::now();
      cancellation.cancel();
    });
    tree.sizes({folder}, cancellation);
    const auto answered = std::chrono::steady_clock::now();
    user.join();
    slowest = std::max(slowest, std::chrono::duration<double>(answered - asked).count());
  }
  return slowest;
}

int walk(const std::string& folder, int rounds) {
  LinuxFileTree one(1), two(2);
  std::vector<Series> all = {{"floor", [&] { return bareWalk(AT_FDCWD, folder.c_str()); }},
                             {"one thread", [&] { return one.sizes({folder}, {}).front(); }},
                             {"two threads", [&] { return two.sizes({folder}, {}).front(); }}};
  for (auto& series : all) series.run(); // warm
  for (int i = 0; i < rounds; ++i)
    for (auto& series : all) series.round();
  for (const auto& series : all) {
    fmt::print("{:<12} cpu {:.3f} s ({:.2f} x floor)  wall {:.3f} s ({:.2f} x one thread)  {} bytes\n",
               series.name, median(series.cpu), median(series.cpu) / median(all[0].cpu), median(series.wall),
               median(series.wall) / median(all[1].wall), series.sum);
  }
  fmt::print("cancelled    answers after {:.1f} ms at most\n", 1e3 * slowestCancel(two, folder));
  return all[0].sum == all[1].sum && all[0].sum == all[2].sum ? 0 : 1;
}

double peakMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return double(usage.ru_maxrss) / 1024;
}

int memory(const std::string& folder) {
  const auto idle = peakMiB();
  const auto sum = LinuxFileTree(2).sizes({folder}, {}).front();
  fmt::print("peak {:.1f} MiB over {:.1f} MiB idle, {} bytes\n", peakMiB() - idle, idle, sum);
  return 0;
}

} // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 3 && arguments[0] == "generate") {
    generate(arguments[1], std::stoi(arguments[2]));
    return 0;
  }
  if (arguments.size() >= 2 && arguments[0] == "walk")
    return walk(arguments[1], arguments.size() > 2 ? std::stoi(arguments[2]) : 15);
  if (arguments.size() == 2 && arguments[0] == "memory") return memory(arguments[1]);
  fmt::print(stderr,
             "usage: StorageWalkBench generate FOLDER ENTRIES | walk FOLDER [ROUNDS] | memory FOLDER\n");
  return 2;
}
