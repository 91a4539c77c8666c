// The scanning of session logs against `cat` of the same files, and a refresh that finds nothing new against
// listing and asking for the same files.
//
// AIUsageBench [FOLDER] writes 1 GB of logs and 5,000 small files there (in the temporary folder unless told
// otherwise, removed at the end) and prints medians of rounds in which all sides take turns. Every scan is a
// program of its own with an empty database. The cache is warm.
//
// AIUsageBench --generate HOME SEED BYTES FILES only writes logs, dated before now.

#include "Base/LocalTime.h"
#include "Bench/AIUsage/LogGenerator.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "Platform/Posix/PosixLogFiles.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace korvell {
namespace {

namespace fs = std::filesystem;

struct Cost {
  double cpu = 0, wall = 0; ///< seconds
  double peak = 0;          ///< MiB
};

Cost runProgram(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  const auto start = SystemClock().monotonic();
  pid_t pid = 0;
  if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) return {};
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
  if (status != 0) fmt::print("{} failed\n", arguments[0]);
  return {seconds(usage.ru_utime) + seconds(usage.ru_stime), (SystemClock().monotonic() - start).count(),
          double(usage.ru_maxrss) / 1'024};
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double cpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

AIUsageScanner::Options options(const std::string& home, int threads) {
  auto options = AIUsageScanner::defaults({.home = home, .data = home + "/data"});
  options.threads = threads;
  return options;
}

int scanOnce(const std::string& home, int threads) {
  PosixLogFiles files;
  SystemTimeZone zone;
  SystemClock clock;
  AIUsageScanner scanner(options(home, threads), files, zone, clock);
  scanner.refresh(clock.now());
  return scanner.lastOutcome() == AIUsageScanner::Outcome::done ? 0 : 1;
}

/// What any way of finding out that nothing changed must do.
std::size_t listAndStat(const std::string& folder) {
  std::size_t found = 0;
  DIR* open = opendir(folder.c_str());
  if (!open) return 0;
  std::vector<std::string> folders;
  while (const dirent* entry = readdir(open)) {
    const std::string_view name = entry->d_name;
    struct stat info {};
    if (name == "." || name == "..") continue;
    if (entry->d_type == DT_DIR)
      folders.push_back(folder + "/" + entry->d_name);
    else if (fstatat(dirfd(open), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0)
      ++found;
  }
  closedir(open);
  for (const auto& next : folders) found += listAndStat(next);
  return found;
}

void benchFirstScan(const std::string& self, const std::string& home) {
  // In a program of its own: a child's peak memory is never less than its parent's at its start.
  runProgram({self, "--generate", home, "1", "1000000000", "400"});
  sync(); // else the kernel would still be writing in the first rounds
  std::vector<std::string> cat = {"cat"};
  std::uintmax_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(home))
    if (entry.is_regular_file()) {
      cat.push_back(entry.path());
      bytes += entry.file_size();
    }
  fmt::print("{} files, {:.3f} GB\n", cat.size() - 1, double(bytes) / 1e9);
  const std::pair<const char*, std::vector<std::string>> sides[] = {
      {"cat", cat},
      {"scan, one thread", {self, "--scan", home, "1"}},
      {"scan, two threads", {self, "--scan", home, "2"}},
      {"idle", {self, "--scan", home + "/data", "1"}}};
  std::map<std::string, std::vector<Cost>> costs;
  for (int round = 0; round < 9; ++round)
    for (const auto& [name, command] : sides) {
      fs::remove_all(home + "/data");
      costs[name].push_back(runProgram(command));
    }
  const auto middle = [&](const std::string& name, double Cost::*what, bool relative) {
    std::vector<double> values;
    for (std::size_t i = 0; i < costs[name].size(); ++i)
      values.push_back(costs[name][i].*what / (relative ? costs["cat"][i].*what : 1));
    return median(values);
  };
  fmt::print("{:<20}{:>9}{:>9}{:>11}{:>12}{:>10}\n", "", "CPU s", "wall s", "CPU / cat", "wall / cat",
             "peak MiB");
  for (const auto& [name, command] : sides)
    fmt::print("{:<20}{:>9.3f}{:>9.3f}{:>11.2f}{:>12.2f}{:>10.1f}\n", name, middle(name, &Cost::cpu, false),
               middle(name, &Cost::wall, false), middle(name, &Cost::cpu, true),
               middle(name, &Cost::wall, true), middle(name, &Cost::peak, false));
}

void benchNothingNew(const std::string& home) {
  generateLogs(home, 50'000'000, 5'000, 2, std::int64_t(std::time(nullptr)));
  PosixLogFiles files;
  SystemTimeZone zone;
  SystemClock clock;
  AIUsageScanner scanner(options(home, 1), files, zone, clock);
  scanner.refresh(clock.now());
  std::vector<double> floor, ours, ratio;
  for (int round = 0; round < 31; ++round) {
    const double start = cpuSeconds();
    const auto found = listAndStat(home + "/.claude/projects") + listAndStat(home + "/.codex/sessions");
    const double between = cpuSeconds();
    const auto stats = scanner.refresh(clock.now());
    const double end = cpuSeconds();
    if (found < 5'000 || stats.files != 0) fmt::print("the refresh was not one without news\n");
    floor.push_back(between - start);
    ours.push_back(end - between);
    ratio.push_back((end - between) / (between - start));
  }
  fmt::print("nothing new, 5,000 files: list and stat {:.2f} ms, refresh {:.2f} ms, ratio {:.2f}\n",
             median(floor) * 1e3, median(ours) * 1e3, median(ratio));
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() == 4 && arguments[1] == "--scan")
    return scanOnce(arguments[2], std::stoi(arguments[3]));
  if (arguments.size() == 6 && arguments[1] == "--generate") {
    generateLogs(arguments[2], std::stoll(arguments[4]), std::stoi(arguments[5]), std::stoull(arguments[3]),
                 std::int64_t(std::time(nullptr)));
    return 0;
  }
  auto pattern =
      (arguments.size() > 1 ? fs::path(arguments[1]) : fs::temp_directory_path()) / "korvell-ai-XXXXXX";
  auto folder = pattern.string();
  if (!mkdtemp(folder.data())) return 1;
  benchFirstScan(arguments[0], folder + "/first");
  benchNothingNew(folder + "/still");
  fs::remove_all(folder);
  return 0;
}

} // namespace
} // namespace korvell

int main(int count, char** arguments) { return korvell::run({arguments, arguments + count}); }
