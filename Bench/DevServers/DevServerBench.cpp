// A warm scan for development servers against lsof listing the same ports, on the same machine in the same
// run: 1,500 processes beside those that are there, 200 of them listening from project folders.
//
// CPU milliseconds, medians of rounds in which both take turns.

#include "Bench/Measure.h"
#include "Core/DevServers/DevServerScanner.h"
#include "Platform/Host.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace korvell {
namespace {

constexpr int processes = 1500;
constexpr int listeners = 200;
constexpr int rounds = 15;

/// Children that do nothing, ended with the object.
class Herd {
public:
  explicit Herd(const std::filesystem::path& home) {
    for (int i = 0; i < processes; ++i) {
      const auto folder = home / fmt::format("project{}", i % 40) / fmt::format("service{}", i % 5);
      if (i < listeners) makeProject(folder);
      const pid_t child = fork();
      if (child == 0) wait(i < listeners ? folder : home, i < listeners);
      if (child > 0) children_.push_back(child);
    }
  }
  ~Herd() {
    for (pid_t child : children_) kill(child, SIGKILL);
    for (pid_t child : children_) waitpid(child, nullptr, 0);
  }

private:
  static void makeProject(const std::filesystem::path& service) {
    std::filesystem::create_directories(service);
    std::filesystem::create_directories(service.parent_path() / ".git");
    std::ofstream(service / "package.json") << "{}";
  }
  [[noreturn]] static void wait(const std::filesystem::path& folder, bool listens) {
    if (chdir(folder.c_str()) != 0) _exit(1);
    const int socket = listens ? ::socket(AF_INET, SOCK_STREAM, 0) : -1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK); // any free port
    if (listens &&
        (bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(socket, 1) != 0))
      _exit(1);
    for (;;) pause();
  }

  std::vector<pid_t> children_;
};

struct Snapshot {
  std::vector<ProcessUsage> usages;
  ParentsByPID parents;
};

Snapshot snapshotOf(ProcessTable& table) {
  Snapshot snapshot;
  for (const ProcessCounters& process : table.read()) {
    const auto facts = table.facts(process.pid);
    if (!facts) continue;
    snapshot.usages.push_back({.pid = process.pid, .name = facts->name, .path = facts->path});
    snapshot.parents[process.pid] = process.parent;
  }
  return snapshot;
}

int run() {
  const Host host = makeHost(processEnvironment());
  if (!host.processes) return 1;
  const auto home = std::filesystem::temp_directory_path() / "korvell-servers-bench";
  std::filesystem::remove_all(home);
  std::filesystem::create_directories(home);
  std::vector<double> ours, lsof;
  std::size_t found = 0;
  {
    const Herd herd(home);
    const SystemClock clock;
    const auto exists = [](const std::string& path) { return std::filesystem::exists(path); };
    DevServerScanner scanner(
        *host.processes, linuxDevServerTables, std::filesystem::canonical(home).string(), exists,
        [](const std::string&) { return false; }, clock);
    const auto snapshot = snapshotOf(*host.processes);
    UsageByPID usages;
    for (const ProcessUsage& usage : snapshot.usages) usages[usage.pid] = &usage;
    for (int round = -2; round < rounds; ++round) {
      const double start = cpuMilliseconds();
      const auto projects = scanner.scan(usages, snapshot.parents);
      const double scanned = cpuMilliseconds() - start;
      const Seconds before = childrenCPUTime();
      if (std::system("lsof -nP -iTCP -sTCP:LISTEN -F pn > /dev/null 2>&1") != 0) return 1;
      if (round < 0) continue;
      ours.push_back(scanned);
      lsof.push_back((childrenCPUTime() - before).count() * 1e3);
      found = 0;
      for (const DevProject& project : projects) found += project.servers.size();
    }
  }
  std::filesystem::remove_all(home);
  const double ratio = median(ours) / median(lsof);
  fmt::print("{} servers found; scan {:.2f} ms, lsof {:.2f} ms of CPU, ratio {:.3f} {}\n", found,
             median(ours), median(lsof), ratio, ratio <= 1.0 / 6 ? "<= 1/6" : "OVER 1/6");
  return 0;
}

} // namespace
} // namespace korvell

int main() { return korvell::run(); }
