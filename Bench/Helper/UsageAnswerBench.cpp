// What an answer of the usage helper costs against opening, reading and closing the same files (stat and io
// of every process) once, in the same run: CPU time, medians of rounds in which both sides take turns. Run it
// as root, or it measures refusals. Exits with 1 when an answer costs more than 1.3 times the floor.

#include "Bench/Measure.h"
#include "Helper/Linux/UsageReader.h"
#include "Helper/Shared/RusageService.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace {

using namespace korvell;

constexpr int rounds = 41;
constexpr double mostTimesTheFloor = 1.3;

void readFiles(const std::vector<ProcessID>& pids) {
  static char buffer[4096];
  for (const ProcessID pid : pids)
    for (const char* name : {"stat", "io"}) {
      const int file = open(fmt::format("/proc/{}/{}", pid, name).c_str(), O_RDONLY | O_CLOEXEC);
      if (file < 0) continue;
      [[maybe_unused]] const auto size = read(file, buffer, sizeof buffer);
      close(file);
    }
}

} // namespace

int main() {
  ProcDirectory proc("/proc");
  std::vector<ProcessID> pids;
  for (const auto& entry : proc.list()) pids.push_back(entry.pid);
  UsageReader reader;
  const RusageService service([&](ProcessID pid) { return reader.read(pid); },
                              [&] { reader.beginRequest(); });

  std::vector<double> floor, answer;
  std::size_t records = 0;
  for (int round = 0; round < rounds; ++round) {
    const double start = cpuMicroseconds();
    readFiles(pids);
    const double between = cpuMicroseconds();
    records = RusageSample::encode(service.rusage(pids)).size() / RusageSample::recordSize;
    floor.push_back(between - start);
    answer.push_back(cpuMicroseconds() - between);
  }
  const double ratio = median(answer) / median(floor);
  fmt::print(
      "{} processes asked, {} told: answer {:.0f} us, files {:.0f} us, ratio {:.2f} (at most {:.1f})\n",
      pids.size(), records, median(answer), median(floor), ratio, mostTimesTheFloor);
  return ratio <= mostTimesTheFloor ? 0 : 1;
}
