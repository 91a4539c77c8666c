// The machine's part of a sampling cycle against opening, reading and closing the same files once, in the
// same run: CPU microseconds, medians of rounds in which both sides take turns. Then 10,000 cycles back to
// back, two seconds of sampler time each (so that volumes are read every sixteenth), and what they did to the
// resident memory. Exits with 1 when a cycle costs more than 1.2 times the floor or the memory grew.

#include "Bench/Measure.h"
#include "Core/Machine/SystemSampler.h"
#include "Platform/Linux/LinuxMachineCounters.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <fmt/format.h>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace korvell {
namespace {

class SteppingClock final : public Clock {
public:
  Date now() const override { return {}; }
  Seconds monotonic() const override { return time; }
  Seconds time{0};
};

/// What a cycle reads on this machine, named here anew and not asked of the adapter where that is possible.
std::vector<std::string> cycleFiles(LinuxMachineCounters& machine) {
  std::vector<std::string> files = {"/proc/loadavg",         "/proc/stat",    "/proc/meminfo",
                                    "/proc/pressure/memory", "/proc/net/dev", "/proc/diskstats"};
  for (const auto& name : folderNames("/sys/block"))
    if (name.starts_with("zram")) files.push_back("/sys/block/" + name + "/mm_stat");
  for (const auto& supply : machine.powerSources().supplies()) files.push_back(supply.file);
  for (const auto& package : machine.powerSources().energy().packages())
    if (package.readable) files.push_back(package.file);
  for (const auto& card : machine.graphics().cards())
    if (card.driver == GraphicsCards::Driver::amdgpu)
      for (const char* file : {"/gpu_busy_percent", "/mem_info_vram_used", "/mem_info_gtt_used"})
        files.push_back(card.folder + file);
  return files;
}

void readOnce(const std::vector<std::string>& files) {
  static std::vector<char> buffer(64 * 1024);
  for (const auto& file : files) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) continue;
    [[maybe_unused]] const auto n = ::read(descriptor, buffer.data(), buffer.size());
    ::close(descriptor);
  }
}

double microsecondsPerCall(int calls, const std::function<void()>& work) {
  const double start = cpuMicroseconds();
  for (int i = 0; i < calls; ++i) work();
  return (cpuMicroseconds() - start) / calls;
}

int run() {
  constexpr int rounds = 31, calls = 100, cycles = 10'000;
  LinuxMachineCounters machine;
  SteppingClock clock;
  SystemSampler sampler(machine, clock);
  SystemSnapshot snapshot;
  const auto files = cycleFiles(machine);
  const auto cycle = [&] { sampler.sample(snapshot); };
  const auto floor = [&] { readOnce(files); };

  std::vector<double> cycleTimes, floorTimes, ratios, volumeTimes;
  for (int round = 0; round < rounds; ++round) {
    cycleTimes.push_back(microsecondsPerCall(calls, cycle));
    floorTimes.push_back(microsecondsPerCall(calls, floor));
    ratios.push_back(cycleTimes.back() / floorTimes.back());
    volumeTimes.push_back(microsecondsPerCall(1, [&] { machine.volumes(); }));
  }
  const double ratio = median(ratios);
  fmt::print("a cycle ({} files, {} cores)   {:8.1f} us\n", files.size(), snapshot.cpu.perCore.size(),
             median(cycleTimes));
  fmt::print("opening, reading, closing them  {:8.1f} us\n", median(floorTimes));
  fmt::print("ratio                           {:8.2f}     limit 1.20\n", ratio);
  fmt::print("volumes, every 30 s             {:8.1f} us\n", median(volumeTimes));

  const auto steps = [&](int count) {
    for (int i = 0; i < count; ++i) {
      clock.time += Seconds{2};
      sampler.sample(snapshot);
    }
  };
  steps(cycles / 10); // warms what is kept
  residentBytes();    // and its own code
  const long before = residentBytes();
  const double start = cpuMicroseconds();
  steps(cycles);
  const double each = (cpuMicroseconds() - start) / cycles;
  const long growth = residentBytes() - before;
  fmt::print("{} cycles with volumes       {:8.1f} us each\n", cycles, each);
  fmt::print("resident memory                 {:8.1f} MiB, grew by {} bytes\n", double(before) / 1048576,
             growth);
  return ratio <= 1.2 && growth <= 0 ? 0 : 1;
}

} // namespace
} // namespace korvell

int main() { return korvell::run(); }
