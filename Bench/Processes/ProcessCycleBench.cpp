// One full sampling cycle (machine, processes, owners, groups) against a loop that lists the processes and
// opens, reads and closes stat, statm and io of each: CPU milliseconds in the same run, in turns, medians.
// Cycles are two seconds of sampler time apart, so that the rotation of the memory readings costs what it
// costs in use. Then cycles back to back with processes that come and go, and what they did to the resident
// memory. Exits with 1 when a limit is passed.
//
// usage: ProcessCycleBench [cycles back to back, 10000]

#include "Bench/Measure.h"
#include "Core/Machine/LinuxOwners.h"
#include "Core/Machine/ProcessSampler.h"
#include "Core/Machine/SystemSampler.h"
#include "Herd.h"
#include "Platform/Absent.h"
#include "Platform/Linux/DesktopFolders.h"
#include "Platform/Linux/LinuxMachineCounters.h"
#include "Platform/Linux/LinuxProcessControl.h"
#include "Platform/Linux/LinuxProcessTable.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace korvell {
namespace {

class SteppingClock final : public Clock {
public:
  Date now() const override { return {}; }
  Seconds monotonic() const override { return time; }
  Seconds time{100'000};
};

/// Everything that a cycle needs, as the application puts it together.
struct Cycle {
  SteppingClock clock;
  LinuxMachineCounters machine;
  SystemSampler system{machine, clock};
  LinuxProcessTable table{sources(clock)};
  NoRunningApplications applications;
  DesktopFolders folders = DesktopFolders::of(linuxUserFolders(processEnvironment()), processEnvironment());
  LinuxOwners owners{folders, "", geteuid()};
  ProcessSampler processes{{table, applications, owners, clock}, 2};
  SystemSnapshot snapshot;

  static LinuxProcessTable::Sources sources(const Clock& clock) {
    auto sources = LinuxProcessTable::systemSources();
    sources.sinceBoot = [&clock] { return clock.monotonic(); };
    return sources;
  }
  void run() {
    clock.time += Seconds{2};
    system.sample(snapshot);
    snapshot.apps = processes.sample({});
  }
  std::size_t count() const {
    std::size_t count = 0;
    for (const auto& app : snapshot.apps) count += app.processes.size();
    return count;
  }
};

void readThreeFilesOfEach(ProcDirectory& proc) {
  const auto entries = proc.list();
  for (const auto entry : entries)
    for (const char* name : {"stat", "statm", "io"}) proc.read(entry.pid, name);
}

bool compare(const char* what, int count, Herd::Kind kind, double limit) {
  constexpr int rounds = 15;
  Herd herd(count, kind);
  ProcDirectory proc("/proc");
  Cycle cycle;
  cycle.run();
  cycle.run();
  std::vector<double> cycles, floors, ratios;
  for (int round = 0; round < rounds; ++round) {
    if (kind == Herd::Kind::active) herd.stir();
    auto before = cpuMilliseconds();
    cycle.run();
    cycles.push_back(cpuMilliseconds() - before);
    before = cpuMilliseconds();
    readThreeFilesOfEach(proc);
    floors.push_back(cpuMilliseconds() - before);
    ratios.push_back(cycles.back() / floors.back());
  }
  const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
  const double ratio = median(ratios);
  fmt::print("{:<10} {:6} processes   cycle {:7.2f} ms   floor {:7.2f} ms   ratio {:.2f} ({:.2f} .. {:.2f})"
             "   limit {:.2f}\n",
             what, cycle.count(), median(cycles), median(floors), ratio, *low, *high, limit);
  return ratio <= limit;
}

long residentBytes() {
  ProcDirectory proc("/proc");
  const auto statm = parseProcessStatm(proc.read(getpid(), "statm").text);
  return statm ? long(statm->resident) * sysconf(_SC_PAGESIZE) : 0;
}

/// Resident memory before and after many cycles in which processes come and go.
bool run(int cycles) {
  Herd herd(100, Herd::Kind::sleeping);
  Cycle cycle;
  const auto turn = [&](int count) {
    for (int i = 0; i < count; ++i) {
      herd.replace(2);
      cycle.run();
    }
  };
  turn(cycles / 10 + 1);
  const auto before = residentBytes();
  turn(cycles);
  const auto growth = residentBytes() - before;
  fmt::print("{} cycles, two processes of {} replaced in each: {:.1f} MiB resident, grew by {} KiB\n", cycles,
             cycle.count(), double(before) / (1 << 20), growth / 1024);
  return growth <= 256 * 1024;
}

} // namespace
} // namespace korvell

int main(int argc, char** argv) {
  using namespace korvell;
  bool good = compare("sleeping", 500, Herd::Kind::sleeping, 0.5);
  good &= compare("sleeping", 1500, Herd::Kind::sleeping, 0.5);
  good &= compare("active", 500, Herd::Kind::active, 1.2);
  good &= compare("active", 1500, Herd::Kind::active, 1.2);
  good &= run(argc > 1 ? std::atoi(argv[1]) : 10'000);
  return good ? 0 : 1;
}
