// One full sampling cycle (machine, processes, owners, groups) against a loop that lists the processes and
// opens, reads and closes stat, statm and io of each: CPU milliseconds in the same run, in turns, medians.
// Cycles are two seconds of sampler time apart, so that the rotation of the memory readings costs what it
// costs in use. Once back to back and once with the processor's caches wiped before each side. Then cycles
// back to back with processes that come and go, and what they did to the resident memory. Exits with 1 when a
// limit is passed.
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
  std::shared_ptr<SharedReadings> shared = std::make_shared<SharedReadings>("/proc", "/sys");
  LinuxMachineCounters machine{{}, shared};
  SystemSampler system{machine, clock};
  LinuxProcessTable table{sources(clock, shared)};
  NoRunningApplications applications;
  DesktopFolders folders = DesktopFolders::of(linuxUserFolders(processEnvironment()), processEnvironment());
  LinuxOwners owners{folders, "", geteuid()};
  ProcessSampler processes{{table, applications, owners, clock}, 2};
  SystemSnapshot snapshot;

  static LinuxProcessTable::Sources sources(const Clock& clock, std::shared_ptr<SharedReadings> shared) {
    auto sources = LinuxProcessTable::systemSources(std::move(shared));
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

enum class Caches { warm, cold };

/// Leaves the processor's caches as other work leaves them to a program that wakes up every ten seconds.
class Wiper {
public:
  explicit Wiper(Caches caches) : memory_(caches == Caches::cold ? 64 << 20 : 0) {}
  void wipe() {
    for (std::size_t i = 0; i < memory_.size(); i += 64) ++memory_[i];
  }

private:
  std::vector<char> memory_;
};

/// Limits are those of a sleeping and of an active herd.
bool compare(int count, Herd::Kind kind, Caches caches) {
  const bool sleeping = kind == Herd::Kind::sleeping;
  const double limit = sleeping ? 0.25 : 1.1;
  const auto* what = sleeping ? "sleeping" : "active";
  constexpr int rounds = 15;
  Herd herd(count, kind);
  Wiper wiper(caches);
  ProcDirectory proc("/proc");
  Cycle cycle;
  cycle.run();
  cycle.run();
  std::vector<double> cycles, floors, ratios;
  for (int round = 0; round < rounds; ++round) {
    if (kind == Herd::Kind::active) herd.stir();
    wiper.wipe();
    auto before = cpuMilliseconds();
    cycle.run();
    cycles.push_back(cpuMilliseconds() - before);
    wiper.wipe();
    before = cpuMilliseconds();
    readThreeFilesOfEach(proc);
    floors.push_back(cpuMilliseconds() - before);
    ratios.push_back(cycles.back() / floors.back());
  }
  const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
  const double ratio = median(ratios);
  fmt::print("{:<8} {} {:6} processes   cycle {:7.2f} ms   floor {:7.2f} ms   ratio {:.2f} ({:.2f} .. {:.2f})"
             "   limit {:.2f}\n",
             what, caches == Caches::cold ? "cold" : "warm", cycle.count(), median(cycles), median(floors),
             ratio, *low, *high, limit);
  return ratio <= limit;
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
  bool good = true;
  for (const auto caches : {Caches::warm, Caches::cold})
    for (const auto kind : {Herd::Kind::sleeping, Herd::Kind::active})
      for (const int count : {500, 1500}) good &= compare(count, kind, caches);
  good &= run(argc > 1 ? std::atoi(argv[1]) : 10'000);
  return good ? 0 : 1;
}
